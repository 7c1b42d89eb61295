// A fake browser in memory, as the extension sees it through its API: tabs, windows, storage, permissions, alarms and
// ports to the native host. The extension gets `api`; the test uses everything else.

import { webcrypto } from 'node:crypto';

import { Companion } from '../src/companion.js';
import { reportedId } from '../src/reported_id.js';
import { settle } from './virtual_clock.js';

globalThis.crypto ??= webcrypto;  // older versions of node have it only there

class Event {
  #listeners = [];
  addListener = (listener) => this.#listeners.push(listener);
  fire = (...values) => this.#listeners.map((listener) => listener(...values));
  get isHeard() {
    return this.#listeners.length > 0;
  }
}

// A storage area. As in a real one, values are converted to JSON and back.
class Area {
  values = {};
  broken = false;
  async get(key) {
    this.#check();
    const { values } = this;
    return structuredClone(key === null ? values : Object.hasOwn(values, key) ? { [key]: values[key] } : {});
  }
  async set(values) {
    this.#check();
    Object.assign(this.values, JSON.parse(JSON.stringify(values)));
  }
  async remove(key) {
    this.#check();
    delete this.values[key];
  }
  #check() {
    if (this.broken) throw new Error('storage is broken');
  }
}

class Port {
  onMessage = new Event();
  onDisconnect = new Event();
  sent = [];
  open = true;
  postMessage(message) {
    if (!this.open) throw new Error('Attempting to use a disconnected port object');
    this.sent.push(JSON.parse(JSON.stringify(message)));
  }
}

export class FakeBrowser {
  session = new Area();
  local = new Area();
  tabs = new Map();
  windows = new Map();
  alarms = new Map();
  ports = [];
  hostExists = true;
  siteAccess = false;
  optionsOpened = 0;
  reloads = 0;
  injected = [];  // ids of the tabs into which the page script was injected
  marked = new Set();  // ids of the tabs whose page has the mark
  beforeInjection = () => {};
  run = 0;  // of the background

  constructor(clock) {
    this.clock = clock;
    this.openWindow(1, { focused: true });
  }

  // --- its life ---

  // `adapt`: what the extension itself makes of the API in some browsers.
  async start(adapt = (api) => api) {
    this.#makeApi();
    new Companion(adapt(this.api), this.clock, ++this.run).start();
    await settle();
  }

  // What this background calls a tab.
  named(id) {
    return reportedId(this.run, id);
  }

  // As the user does in the list of extensions.
  // `left`: what the background wrote while it was ended.
  async reloadExtension(left = {}) {
    this.stopBackground();
    this.session = new Area();
    await this.session.set(left);
    await this.start();
  }

  // The browser stops an idle background and starts it again for an event.
  async restartBackground() {
    this.stopBackground();
    await this.start();
  }

  stopBackground() {
    this.clock.forgetTimers();
    for (const port of this.ports) port.open = false;
  }

  async restart() {
    this.stopBackground();
    this.session = new Area();
    this.tabs.clear();
    this.marked.clear();
    const started = this.start();
    this.api.runtime.onStartup.fire();
    await started;
  }

  // --- the native host ---

  get port() {
    return this.ports.at(-1);
  }

  get sent() {
    return this.port.sent;
  }

  async says(message) {
    this.port.onMessage.fire(message);
    await settle();
  }

  async hostExits() {
    const port = this.port;
    port.open = false;
    port.onDisconnect.fire(port);
    await settle();
  }

  // --- tabs and windows ---

  openWindow(id, { focused = false } = {}) {
    this.windows.set(id, { id, focused, minimised: false });
  }

  openTab(id, properties = {}) {
    const tab = { id, windowId: 1, active: false, audible: false, mutedInfo: { muted: false }, incognito: false,
      discarded: false, title: 'A page', url: 'https://example.org/', ...properties };
    this.tabs.set(id, tab);
    return tab;
  }

  async update(id, change) {
    const tab = Object.assign(this.tabs.get(id), change);
    this.api.tabs.onUpdated.fire(id, change, { ...tab });
    await settle();
  }

  sound = (id) => this.update(id, { audible: true });
  silence = (id) => this.update(id, { audible: false });
  mute = (id) => this.update(id, { mutedInfo: { muted: true } });
  unmute = (id) => this.update(id, { mutedInfo: { muted: false } });

  // A newly loaded page has no scripts of the old one.
  async load(id) {
    this.marked.delete(id);
    await this.update(id, { status: 'complete' });
  }

  // Another page comes into the tab; it has a title once it was read.
  async navigate(id, title) {
    this.marked.delete(id);
    const url = 'https://example.org/next?token=1';
    Object.assign(this.tabs.get(id), { url, title: 'example.org/next?token=1' });
    await this.update(id, { status: 'loading' });
    await this.update(id, { title });
    await this.update(id, { status: 'complete' });
  }

  async close(id) {
    this.tabs.delete(id);
    this.marked.delete(id);
    this.api.tabs.onRemoved.fire(id, {});
    await settle();
  }

  async discard(id, newId) {
    const tab = { ...this.tabs.get(id), id: newId, discarded: true, audible: false };
    this.tabs.delete(id);
    this.marked.delete(id);
    this.tabs.set(newId, tab);
    this.api.tabs.onReplaced.fire(newId, id);
    await settle();
  }

  async activate(id) {
    this.#activate(id);
    await settle();
  }

  #activate(id) {
    const { windowId } = this.tabs.get(id);
    for (const tab of this.tabs.values()) if (tab.windowId === windowId) tab.active = tab.id === id;
    this.api.tabs.onActivated.fire({ tabId: id, windowId });
  }

  async focusWindow(id) {
    this.#focusWindow(id);
    await settle();
  }

  #focusWindow(id) {
    for (const window of this.windows.values()) window.focused = window.id === id;
    this.api.windows.onFocusChanged.fire(id);
  }

  async grantSites() {
    this.siteAccess = true;
    this.api.permissions.onAdded.fire({ origins: ['<all_urls>'] });
    await settle();
  }

  async revokeSites() {
    this.siteAccess = false;
    this.api.permissions.onRemoved.fire({ origins: ['<all_urls>'] });
    await settle();
  }

  async fireAlarms() {
    for (const name of this.alarms.keys()) this.api.alarms.onAlarm.fire({ name });
    await settle();
  }

  async ask(message) {
    return new Promise((answer) => this.api.runtime.onMessage.fire(message, {}, answer));
  }

  // --- the API ---

  #makeApi() {
    this.api = {
      runtime: this.#runtime(),
      tabs: this.#tabsApi(),
      windows: {
        WINDOW_ID_NONE: -1,
        onFocusChanged: new Event(),
        get: async (id) => ({ ...this.#window(id) }),
        update: async (id, { focused }) => {
          Object.assign(this.#window(id), { minimised: false });
          if (focused) this.#focusWindow(id);
        },
      },
      storage: { session: this.session, local: this.local },
      alarms: {
        onAlarm: new Event(),
        create: (name, info) => this.alarms.set(name, info),
        clear: async (name) => this.alarms.delete(name),
      },
      action: { onClicked: new Event() },
      permissions: {
        onAdded: new Event(),
        onRemoved: new Event(),
        contains: async () => this.siteAccess,
      },
      scripting: { executeScript: (injection) => this.#inject(injection) },
    };
  }

  #runtime() {
    return {
      lastError: undefined,
      onStartup: new Event(),
      onInstalled: new Event(),
      onUpdateAvailable: new Event(),
      onMessage: new Event(),
      getManifest: () => ({ version: '1.2.3' }),
      openOptionsPage: async () => void this.optionsOpened++,
      reload: () => void this.reloads++,
      connectNative: (host) => {
        const port = Object.assign(new Port(), { host });
        this.ports.push(port);
        if (!this.hostExists) {
          setImmediate(() => {
            if (!port.open) return;
            port.open = false;
            port.onDisconnect.fire(port);
          });
        }
        return port;
      },
    };
  }

  #tabsApi() {
    return {
      onUpdated: new Event(),
      onRemoved: new Event(),
      onReplaced: new Event(),
      onActivated: new Event(),
      query: async (wanted) => {
        if (wanted.windowId !== undefined) this.#window(wanted.windowId);
        return [...this.tabs.values()]
          .filter((tab) => Object.entries(wanted).every(([key, value]) => tab[key] === value))
          .map((tab) => ({ ...tab }));
      },
      get: async (id) => {
        if (!this.tabs.has(id)) throw new Error(`No tab with id: ${id}.`);
        return { ...this.tabs.get(id) };
      },
      update: async (id, { active }) => {
        if (!this.tabs.has(id)) throw new Error(`No tab with id: ${id}.`);
        if (active) this.#activate(id);
        return { ...this.tabs.get(id) };
      },
      sendMessage: async (id, message) => {
        if (!this.marked.has(id)) throw new Error('Could not establish connection. Receiving end does not exist.');
        if (message.type === 'unmark') this.marked.delete(id);
      },
    };
  }

  #window(id) {
    if (!this.windows.has(id)) throw new Error(`No window with id: ${id}.`);
    return this.windows.get(id);
  }

  async #inject({ target: { tabId }, files }) {
    if (!this.siteAccess) throw new Error('Cannot access contents of the page.');
    if (!this.tabs.has(tabId)) throw new Error(`No tab with id: ${tabId}`);
    if (!files.includes('/src/page_mark.js')) throw new Error(`Could not load ${files}`);
    await this.beforeInjection();
    this.injected.push(tabId);
    this.marked.add(tabId);
  }
}
