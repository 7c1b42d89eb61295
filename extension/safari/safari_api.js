// Safari's native messaging in the form of the other browsers'. There, a port carries messages both ways. In Safari it
// only brings the messages of the application, each with a name, and the extension's own go one by one to a native
// handler, which Safari starts for each of them.

const APPLICATION = 'com.quarnel.tollvane';  // Safari ignores it: an extension has only its own application
const MESSAGE = 'tollvane';
const never = { addListener() {} };

// `target` with other values for some of its members. Its functions are called on itself, as a browser's objects demand.
const changed = (target, members) =>
  new Proxy(target, {
    get(object, name) {
      if (Object.hasOwn(members, name)) return members[name];
      const value = object[name];
      return typeof value === 'function' ? value.bind(object) : value;
    },
  });

const connectNative = (runtime) => {
  const port = runtime.connectNative(APPLICATION);
  return {
    onMessage: {
      addListener: (listener) =>
        port.onMessage.addListener((message) => {
          if (message?.name === MESSAGE) listener(message.userInfo);
        }),
    },
    onDisconnect: port.onDisconnect,
    // The handler answers nothing that matters, and a message that is lost is not sent again.
    postMessage: (message) => void runtime.sendNativeMessage(APPLICATION, message).catch(() => {}),
  };
};

// `api`: Safari's object of all its interfaces.
export const safariApi = (api) =>
  changed(api, {
    runtime: changed(api.runtime, {
      connectNative: () => connectNative(api.runtime),
      onUpdateAvailable: api.runtime.onUpdateAvailable ?? never,  // an update comes with the application
    }),
  });
