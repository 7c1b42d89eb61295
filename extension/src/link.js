// The link to Tollvane: a port to its bridge, which the browser starts, and which reports whether Tollvane itself is
// there. Introduces the extension on each new port. Connects again when the port breaks: soon at first, then later and
// later, and at last once a minute by an alarm, because the browser stops a background that only waits. While Tollvane
// is not running, its bridge waits for it, so the port stays open.

const HOST = 'com.quarnel.tollvane';
const ALARM = 'reconnect';
const FIRST_DELAY = 250;  // ms, doubled by each failure
const LONGEST_DELAY = 16_000;  // ms; a background that waits for longer may be stopped
const HAS_LASTED = 10_000;  // ms; a port that lived this long was a success

export class Link {
  #api;
  #clock;
  #memory;
  #received;
  #port = null;
  #state = 'unknown';
  #openedAt = 0;
  #timer;

  // `received` is called with each message of Tollvane. It may return a promise, whose failure is ignored.
  constructor(api, clock, memory, received) {
    this.#api = api;
    this.#clock = clock;
    this.#memory = memory;
    this.#received = received;
  }

  // 'linked': Tollvane is there. 'waiting': its bridge is, and waits for it. 'missing': no bridge either. 'unknown':
  // not known yet.
  get state() {
    return this.#state;
  }

  connect() {
    if (this.#port) return;
    this.#clock.clearTimeout(this.#timer);
    this.#openedAt = this.#clock.now();
    const { runtime } = this.#api;
    let port;
    try {
      port = runtime.connectNative(HOST);
    } catch {
      this.#closed();
      return;
    }
    this.#port = port;
    port.onMessage.addListener((message) => {
      if (port !== this.#port) return;
      // Only Tollvane says anything else, and an older bridge says nothing of it.
      this.#becomes(message?.type === 'link' && message.open !== true ? 'waiting' : 'linked');
      Promise.resolve(this.#received(message)).catch(() => {});
    });
    port.onDisconnect.addListener(() => {
      void runtime.lastError;  // if it is not read, the browser reports an unchecked error
      if (port === this.#port) this.#closed();
    });
    this.#becomes(this.#state);
    this.send({ type: 'hello', version: runtime.getManifest().version });
  }

  // A message that cannot be sent is dropped, because a late report of a sound is useless.
  send(message) {
    try {
      this.#port?.postMessage(message);
    } catch {
      // The port breaks; onDisconnect follows.
    }
  }

  onAlarm({ name }) {
    if (name !== ALARM) return;
    if (this.#port) this.#api.alarms.clear(ALARM);
    else this.connect();
  }

  async #closed() {
    this.#port = null;
    this.#becomes('missing');
    this.#api.alarms.create(ALARM, { delayInMinutes: 1, periodInMinutes: 1 });
    const lasted = this.#clock.now() - this.#openedAt >= HAS_LASTED;
    await this.#memory.ready;
    const failures = lasted ? 0 : (this.#memory.get('failures') ?? 0);
    const delay = FIRST_DELAY * 2 ** failures;
    this.#memory.set('failures', Math.min(failures + 1, 10));
    if (delay <= LONGEST_DELAY) this.#timer = this.#clock.setTimeout(() => this.connect(), delay);
  }

  // The options page watches the value in the memory.
  async #becomes(state) {
    this.#state = state;
    await this.#memory.ready;
    if (this.#memory.get('link') !== this.#state) this.#memory.set('link', this.#state);
  }
}
