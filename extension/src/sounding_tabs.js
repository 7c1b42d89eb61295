// Tells when a tab begins to be heard. A muted tab is not heard, and browsers differ in what they say about one:
// Chromium calls it audible all the same, Firefox tells of its sound again when it is unmuted.

export class SoundingTabs {
  #heard = new Set();

  // `change` and `tab` as tabs.onUpdated gives them. True once for each time the tab begins to be heard.
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
