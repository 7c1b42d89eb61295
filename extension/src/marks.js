// The notes before the titles of tabs that sounded in the background. Which tabs sounded and were not visited since is
// always known; their titles are changed only while Tollvane wants it and the user has given access to the pages.

const PAGE_SCRIPT = '/src/page_mark.js';
export const SITES = { origins: ['<all_urls>'] };

export class Marks {
  #api;
  #memory;

  constructor(api, memory) {
    this.#api = api;
    this.#memory = memory;
  }

  get wanted() {
    return this.#memory.get('markTabs');  // undefined until Tollvane has said it
  }

  allowed() {
    return this.#api.permissions.contains(SITES);
  }

  // True when this turns on what was off before.
  async want(on) {
    await this.#memory.ready;
    const before = this.wanted;
    if (on === before) return false;
    this.#memory.set('markTabs', on);
    await this.apply();
    return before === false;
  }

  async sounded(tab) {
    await this.#memory.ready;
    this.#remember([...this.#unvisited(), tab.id]);
    if (await this.#isWatched(tab)) this.#remember(this.#without(tab.id));
    else await this.#put(tab.id);
  }

  async visited(id) {
    await this.#memory.ready;
    if (!this.#unvisited().includes(id)) return;
    this.#remember(this.#without(id));
    await this.#take(id);
  }

  // A page that went elsewhere took its mark along.
  async loaded(id) {
    await this.#memory.ready;
    await this.#put(id);
  }

  // After a change of what is wanted or allowed.
  async apply() {
    await this.#memory.ready;
    const show = this.wanted && (await this.allowed());
    await Promise.all(this.#unvisited().map((id) => (show ? this.#put(id) : this.#take(id))));
  }

  // Before an update: the next background cannot reach what this one has put into the pages.
  async withdraw() {
    await Promise.all(this.#unvisited().map((id) => this.#take(id)));
  }

  replace(removed, added) {
    if (this.#unvisited().includes(removed)) this.#remember([...this.#without(removed), added]);
  }

  forget(id) {
    if (this.#unvisited().includes(id)) this.#remember(this.#without(id));
  }

  #unvisited() {
    return this.#memory.get('unvisited') ?? [];
  }

  #without(id) {
    return this.#unvisited().filter((each) => each !== id);
  }

  #remember(ids) {
    this.#memory.set('unvisited', [...new Set(ids)]);
  }

  async #isWatched(tab) {
    if (!tab.active) return false;
    const window = await this.#api.windows.get(tab.windowId).catch(() => null);
    return window?.focused === true;
  }

  async #put(id) {
    if (!this.#due(id)) return;
    try {
      await this.#api.scripting.executeScript({ target: { tabId: id }, files: [PAGE_SCRIPT] });
    } catch {
      return;  // no access, or a page that extensions may not touch
    }
    // A page that was still loading took its time, and the user may have come meanwhile.
    if (!this.#due(id)) await this.#take(id);
  }

  #due(id) {
    return this.wanted === true && this.#unvisited().includes(id);
  }

  // By a message, which needs no access: it may be gone by now.
  async #take(id) {
    await this.#api.tabs.sendMessage(id, { type: 'unmark' }).catch(() => {});
  }
}
