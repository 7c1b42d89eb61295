// Keeps a note before the title of the page that it is put into, whatever the page does with its title, until the page
// is looked at or the background says "unmark". Put in again, it marks again. Not a module: browsers inject scripts.

(() => {
  const NOTE = '♪';
  // A page that writes titles faster than this has its way: the note is withdrawn.
  const MOST_TITLES = 20;
  const WITHIN = 1000;  // ms
  const { runtime } = globalThis.browser ?? globalThis.chrome;

  if (globalThis.tollvaneMark) {
    globalThis.tollvaneMark.put();
    return;
  }

  const withoutNotes = (title) => title.replace(/♪ ?/gu, '').trim();

  class Mark {
    #own = null;  // the title as the page wants it; null while there is no mark
    #shown = '';
    #keepsNotes = false;
    #shownAt = [];  // the times of the last MOST_TITLES notes
    #observer = new MutationObserver(() => this.#titleChanged());

    put() {
      if (this.#own !== null) return;
      this.#own = document.title;
      this.#keepsNotes = this.#own.includes(NOTE);
      this.#observer.observe(document.head ?? document.documentElement, {
        childList: true,
        characterData: true,
        subtree: true,
      });
      this.#show();
    }

    take() {
      if (this.#own === null) return;
      this.#adopt();
      this.#observer.disconnect();
      document.title = this.#own;
      this.#own = null;
    }

    #show() {
      const now = performance.now();
      if (this.#shownAt.length === MOST_TITLES && now - this.#shownAt[0] < WITHIN) return this.take();
      this.#shownAt = [...this.#shownAt, now].slice(-MOST_TITLES);
      // As it will read back: the document trims its title.
      this.#shown = `${NOTE} ${withoutNotes(this.#own)}`.trim();
      document.title = this.#shown;
      if (document.title !== this.#shown) this.#observer.disconnect();  // a document without titles
    }

    #titleChanged() {
      if (!runtime.id) this.take();  // the extension is gone, and nobody else would take the mark away
      if (this.#own !== null && this.#adopt()) this.#show();
    }

    // Takes over the title that the page has written; false when it is still the one with our note. Pages build new
    // titles from the one that they read, so the notes in it are ours unless the page had some before us.
    #adopt() {
      const title = document.title;
      if (title === this.#shown) return false;
      this.#own = this.#keepsNotes ? title : withoutNotes(title);
      return true;
    }
  }

  const mark = new Mark();
  globalThis.tollvaneMark = mark;
  runtime.onMessage.addListener((message) => {
    if (message?.type === 'unmark') mark.take();
  });
  // The background sees visits too; this one also works when the extension was removed or updated.
  document.addEventListener('visibilitychange', () => {
    if (document.visibilityState === 'visible') mark.take();
  });
  mark.put();
})();
