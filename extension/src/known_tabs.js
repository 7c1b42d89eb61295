// The tabs that were reported in this run of the browser, by the ids with which they were reported. Other ids are never
// used, because after a restart of the browser an old id may belong to another tab.
//
// A reload of the extension empties session storage although the browser runs on. Therefore the numbers of the tabs (no
// titles, no addresses) are on the disk, too, with the browser's process, which the bridge names: they count again only
// in that very process.
//
// Wait for `ready` before use; it may become another promise.

const MOST = 500;  // ids, far more than the sounds that Tollvane keeps
const KEPT = 'kept';

export class KnownTabs {
  #memory;
  #local;
  #browser;
  #isNewRun = false;

  ready;

  constructor(memory, local) {
    this.#memory = memory;
    this.#local = local;
    this.ready = memory.ready;
  }

  // `browser`: names the browser's process, and no other one that ever runs.
  browserIs(browser) {
    if (typeof browser !== 'string' || browser === this.#browser) return;
    this.#browser = browser;
    this.ready = this.ready.then(() => this.#recall()).catch(() => {});
  }

  // Nothing that is kept can be of this run.
  browserStarted() {
    this.#isNewRun = true;
  }

  // The present id of the tab that was reported as `reported`; undefined if no such tab was reported, or it is closed.
  find(reported) {
    return this.#pairs().find(([each]) => each === reported)?.[1];
  }

  add(reported, id) {
    if (this.find(reported) === id) return;
    this.#set([...this.#pairs().filter(([each]) => each !== reported), [reported, id]]);
  }

  // A discarded tab comes back with another id.
  replace(removed, added) {
    if (this.#has(removed)) this.#set(this.#pairs().map(([each, id]) => [each, id === removed ? added : id]));
  }

  forget(closed) {
    if (this.#has(closed)) this.#set(this.#pairs().filter(([, id]) => id !== closed));
  }

  #has(wanted) {
    return this.#pairs().some(([, id]) => id === wanted);
  }

  // [reported id, the tab's id now], the newest last.
  #pairs() {
    return this.#memory.get('known') ?? [];
  }

  #set(pairs) {
    const known = pairs.slice(-MOST);
    this.#memory.set('known', known);
    if (this.#browser) this.#local.set({ [KEPT]: { browser: this.#browser, known } }).catch(() => {});
  }

  // Needed once after a start of the browser or of the extension; session storage tells whether it was done.
  async #recall() {
    const { [KEPT]: kept } = await this.#local.get(KEPT);
    const isOurs = kept?.browser === this.#browser && !this.#memory.get('recalled') && !this.#isNewRun;
    if (kept && kept.browser !== this.#browser) await this.#local.remove(KEPT);
    const known = this.#pairs();
    const lost = isOurs ? kept.known.filter(([reported]) => this.find(reported) === undefined) : [];
    if (lost.length + known.length > 0) this.#set([...lost, ...known]);
    this.#memory.set('recalled', true);
  }
}
