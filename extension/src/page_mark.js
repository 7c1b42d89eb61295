// Keeps a note before the title of its page, even if the page changes its title, until the user looks at the page or
// the background says "unmark". Injecting it again marks again. It is no module, because browsers inject only scripts.

(() => {
  const NOTE = '♪';
  // If a page writes its title more often than this, the note is withdrawn.
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
      // Trimmed, because reading document.title returns it trimmed.
      this.#shown = `${NOTE} ${withoutNotes(this.#own)}`.trim();
      document.title = this.#shown;
      if (document.title !== this.#shown) this.#observer.disconnect();  // this document has no title
    }

    #titleChanged() {
      if (!runtime.id) this.take();  // the extension is gone, so its background cannot do this
      if (this.#own !== null && this.#adopt()) this.#show();
    }

    // Remembers the title that the page has set; false if the title is still the one with our note. Pages build new
    // titles from the one that they read, so notes in a new title are ours, unless the page had notes before.
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
  // The background notices visits too, but this also works after the extension was removed or updated.
  document.addEventListener('visibilitychange', () => {
    if (document.visibilityState === 'visible') mark.take();
  });
  mark.put();
})();
