// What this run of the browser has taught us. A stopped background loses its variables, and tab ids mean something else
// after a restart of the browser: session storage lives exactly as long as such knowledge is worth.
//
// Wait for `ready` before the first get(). Values must survive JSON. A storage that fails costs the memory, not the
// extension.

const CARRIED = 'carried';
const CARRIED_FOR_AT_MOST = 60_000;  // ms; an update of the extension takes less, a restart of the browser may not

export class RunMemory {
  #session;
  #local;
  #clock;
  #values = {};

  ready;
  isFresh = false;  // this is the first background after a start of the browser or of the extension
  carried = false;  // this is the first background after an update of the extension

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

  // An update empties session storage although the browser runs on. Call right before runtime.reload().
  async carryOver() {
    await this.#local.set({ [CARRIED]: { at: this.#clock.now(), values: this.#values } }).catch(() => {});
  }

  async #load() {
    this.#values = await this.#session.get(null);
    this.isFresh = Object.keys(this.#values).length === 0;
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
