// Remembers values for this run of the browser. A stopped background loses its variables, and tab ids are only valid
// until the browser is restarted, so the values are kept in session storage, which lasts just as long.
//
// Wait for `ready` before the first get(). Values must be representable in JSON. If the storage fails, the values are
// lost with the background, but the extension works.

const CARRIED = 'carried';
const CARRIED_FOR_AT_MOST = 60_000;  // ms; an update takes less time, a restart of the browser may take more

export class RunMemory {
  #session;
  #local;
  #clock;
  #values = {};

  ready;
  carried = false;  // whether this is the first background after an update of the extension

  constructor({ session, local }, clock) {
    this.#session = session;
    this.#local = local;
    this.#clock = clock;
    this.ready = this.#load().catch(() => {});
  }

  get(key) {
    return this.#values[key];
  }

  set(key, value) {
    this.#values[key] = value;
    this.#session.set({ [key]: value }).catch(() => {});
  }

  // Keeps the values over an update, which empties session storage. Call right before runtime.reload().
  async carryOver() {
    await this.#local.set({ [CARRIED]: { at: this.#clock.now(), values: this.#values } }).catch(() => {});
  }

  async #load() {
    this.#values = await this.#session.get(null);
    const { [CARRIED]: carried } = await this.#local.get(CARRIED);
    if (!carried) return;
    await this.#local.remove(CARRIED);
    const age = this.#clock.now() - carried.at;
    if (age < 0 || age > CARRIED_FOR_AT_MOST) return;
    this.carried = true;
    this.#values = { ...carried.values, ...this.#values };
    await this.#session.set(this.#values);
  }
}
