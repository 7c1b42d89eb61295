// Tells when a tab begins to be heard. A muted tab is not heard. Browsers report it differently: Chromium still calls
// it audible, Firefox reports its sound again when it is unmuted. Firefox does not report that a tab fell silent while
// it was dragged to another window. Chromium calls a tab audible for two seconds after its sound, and reports nothing
// if another page plays in it meanwhile.

const SAME_SOUND = 1500;  // ms; a tab that is heard again so soon goes on with its sound
export const SILENCE_IS_TOLD = 3000;  // ms; a tab that is still called audible so long after its page left is heard

export class SoundingTabs {
  #clock;
  #tabs = new Map();  // by id: whether the tab is heard or only muted, and since when

  constructor(clock) {
    this.#clock = clock;
  }

  // `change` and `tab` come from tabs.onUpdated. True once each time the tab begins to be heard.
  starts(change, tab) {
    if (change.audible === undefined && change.mutedInfo === undefined) return false;
    const now = this.#clock.now();
    const known = this.#tabs.get(tab.id);
    if (tab.audible !== true) {
      this.#tabs.delete(tab.id);
    } else if (tab.mutedInfo?.muted) {
      if (known?.heard) this.#tabs.set(tab.id, { heard: false, since: now });
    } else if (!known?.heard || change.audible === true) {
      this.#tabs.set(tab.id, { heard: true, since: now });
      return !known || now - known.since >= SAME_SOUND;
    }
    return false;
  }

  // To be called when another page comes into a tab. If the tab was heard, returns something for isUnchanged().
  pageLeft(id) {
    const known = this.#tabs.get(id);
    if (!known?.heard) return undefined;
    const now = { ...known };
    this.#tabs.set(id, now);
    return now;
  }

  // Whether nothing was told of the tab's sound since, and no further page has come.
  isUnchanged(id, since) {
    return this.#tabs.get(id) === since;
  }

  knows(id) {
    return this.#tabs.has(id);
  }

  forget(id) {
    this.#tabs.delete(id);
  }
}
