// Marks the tabs that sounded in the background with a note before their titles. It always remembers which tabs sounded
// and were not visited since. It changes titles only while Tollvane asks for marks and the user allows access to pages.

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
    return this.#memory.get('markTabs');  // undefined until Tollvane has sent its setting
  }

  allowed() {
    return this.#api.permissions.contains(SITES);
  }

  // True if this turns the marks on after Tollvane had them off.
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

  // A newly loaded page has no mark, so it is put again.
  async loaded(id) {
    await this.#memory.ready;
    await this.#put(id);
  }

  // Call after the setting or the access to pages has changed.
  async apply() {
    await this.#memory.ready;
    const show = this.wanted && (await this.allowed());
    await Promise.all(this.#unvisited().map((id) => (show ? this.#put(id) : this.#take(id))));
  }

  // Call before an update, because the next background cannot reach the scripts that this one has put into pages.
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
      return;  // there is no access to the page, or extensions may not touch it
    }
    // If the page was still loading, this took a while, and the user may have visited the tab meanwhile.
    if (!this.#due(id)) await this.#take(id);
  }

  #due(id) {
    return this.wanted === true && this.#unvisited().includes(id);
  }

  // Sends a message, which needs no access to the page, because the access may have been taken back.
  async #take(id) {
    await this.#api.tabs.sendMessage(id, { type: 'unmark' }).catch(() => {});
  }
}
