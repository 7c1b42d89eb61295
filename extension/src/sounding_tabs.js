// Tells when a tab begins to be heard. A muted tab is not heard. Browsers report it differently: Chromium still calls
// it audible, Firefox reports its sound again when it is unmuted.

export class SoundingTabs {
  #heard = new Set();

  // `change` and `tab` come from tabs.onUpdated. True once each time the tab begins to be heard.
  starts(change, tab) {
    if (change.audible === undefined && change.mutedInfo === undefined) return false;
    const heard = tab.audible === true && !tab.mutedInfo?.muted;
    const started = heard && !this.#heard.has(tab.id);
    if (heard) this.#heard.add(tab.id);
    else this.#heard.delete(tab.id);
    return started;
  }

  forget(id) {
    this.#heard.delete(id);
  }
}
