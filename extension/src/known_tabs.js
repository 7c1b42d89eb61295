// The tabs that were reported in this run of the browser, by the ids with which they were reported. Other ids are never
// used, because after a restart of the browser an old id may belong to another tab.
//
// Wait for memory.ready before use.

export class KnownTabs {
  #memory;

  constructor(memory) {
    this.#memory = memory;
  }

  // The present id of the tab that was reported as `reported`; undefined if no such tab was reported, or it is closed.
  find(reported) {
    const ids = this.#ids();
    return Number.isSafeInteger(reported) && Object.hasOwn(ids, reported) ? ids[reported] : undefined;
  }

  add(id) {
    if (this.find(id) === id) return;
    this.#memory.set('reported', { ...this.#ids(), [id]: id });
  }

  // A discarded tab comes back with another id.
  replace(removed, added) {
    this.#change((current) => (current === removed ? added : current));
  }

  forget(id) {
    this.#change((current) => (current === id ? undefined : current));
  }

  #ids() {
    return this.#memory.get('reported') ?? {};
  }

  #change(next) {
    const entries = Object.entries(this.#ids());
    const changed = entries.map(([reported, current]) => [reported, next(current)]);
    if (changed.every(([, current], i) => current === entries[i][1])) return;
    this.#memory.set('reported', Object.fromEntries(changed.filter(([, current]) => current !== undefined)));
  }
}
