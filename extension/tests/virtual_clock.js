// A clock that a test moves on. advance() runs what falls due on the way, in order, and lets promises settle.

export const settle = () => new Promise((done) => setImmediate(done));

export class VirtualClock {
  #now = 1_000_000;
  #next = 1;
  #timers = new Map();

  now() {
    return this.#now;
  }

  setTimeout(call, delay) {
    this.#timers.set(this.#next, { call, at: this.#now + delay });
    return this.#next++;
  }

  clearTimeout(timer) {
    this.#timers.delete(timer);
  }

  // Drops all timers, as when a background is stopped.
  forgetTimers() {
    this.#timers.clear();
  }

  get waiting() {
    return this.#timers.size;
  }

  async advance(milliseconds) {
    const end = this.#now + milliseconds;
    await settle();
    for (;;) {
      const due = [...this.#timers].filter(([, { at }]) => at <= end).sort(([, a], [, b]) => a.at - b.at)[0];
      if (!due) break;
      const [id, { call, at }] = due;
      this.#timers.delete(id);
      this.#now = at;
      call();
      await settle();
    }
    this.#now = end;
  }
}
