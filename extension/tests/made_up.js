// Values that a test makes up, from a seed, so that the same seed gives the same values. `forAll` runs a property with
// many seeds. If one fails, it leaves out steps as long as it fails, and says what is left.

export class MadeUp {
  #state;

  constructor(seed) {
    this.#state = seed;
  }

  // 0 to limit - 1. The generator is "mulberry32".
  below(limit) {
    this.#state = (this.#state + 0x6d2b79f5) | 0;
    let mixed = Math.imul(this.#state ^ (this.#state >>> 15), 1 | this.#state);
    mixed = (mixed + Math.imul(mixed ^ (mixed >>> 7), 61 | mixed)) ^ mixed;
    return ((mixed ^ (mixed >>> 14)) >>> 0) % limit;
  }

  oneOf(values) {
    return values[this.below(values.length)];
  }

  list(most, make) {
    return Array.from({ length: this.below(most + 1) }, () => make());
  }

  text() {
    const letters = ['a', 'Z', '0', ' ', '.', '/', ':', '"', '\\', '\n', '\u0000', '\u202e', '\ud800', '♪', 'é', '😀',
      '<b>', 'https://example.org/', '__proto__'];
    return this.list(8, () => this.oneOf(letters)).join('');
  }

  number() {
    return this.oneOf([0, 1, 2, 3, -1, 0.5, 2 ** 31, 2 ** 53, -(2 ** 53), 1e308, this.below(2 ** 31)]);
  }

  // Any value that JSON can say.
  value(depth = 3) {
    const simple = [() => null, () => true, () => false, () => this.number(), () => this.text()];
    const nested = [() => this.list(4, () => this.value(depth - 1)), () => this.object(depth - 1)];
    return this.oneOf(depth > 0 ? [...simple, ...nested] : simple)();
  }

  object(depth = 2) {
    const names = ['type', 'open', 'browser', 'markTabs', 'req', 'tabId', 'constructor', '__proto__', 'x'];
    return JSON.parse(JSON.stringify(Object.fromEntries(
      this.list(5, () => [this.oneOf(names), this.value(depth)]))));
  }
}

// `make`: a list of steps from MadeUp values. `check`: a promise that fails if the property does not hold for them.
export async function forAll(runs, make, check) {
  for (let seed = 1; seed <= runs; seed++) {
    const steps = make(new MadeUp(seed));
    const failure = await failureOf(check, steps);
    if (!failure) continue;
    const { least, error } = await shrunk(check, steps, failure);
    throw new Error(`seed ${seed}: ${error.message}\nafter ${JSON.stringify(least)}`, { cause: error });
  }
}

async function failureOf(check, steps) {
  try {
    await check(steps);
    return undefined;
  } catch (error) {
    return error;
  }
}

async function shrunk(check, steps, failure) {
  let [least, error] = [steps, failure];
  for (let at = least.length - 1; at >= 0; at--) {
    const fewer = least.filter((_, index) => index !== at);
    const again = await failureOf(check, fewer);
    if (again) [least, error] = [fewer, again];
  }
  return { least, error };
}
