// What holds whatever Tollvane, the browser and the user do, in any order: sequences of made-up steps are played to the
// extension.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { FakeBrowser } from './fake_browser.js';
import { forAll } from './made_up.js';
import { VirtualClock, settle } from './virtual_clock.js';

const PRIVATE = 'A private page';
const MOST_KNOWN = 500;

// The steps are values, so that a failure can be printed and played again.
function step(made) {
  const tab = 1 + made.below(3);
  return made.oneOf([
    () => ['says', made.object()],
    () => ['says', made.value()],
    () => ['says', { type: 'link', open: made.oneOf([true, false, null]), browser: made.oneOf(['a', 'b', 7]) }],
    () => ['says', { type: 'settings', markTabs: made.oneOf([true, false, 'yes']) }],
    () => ['says', { type: 'whichAudible' }],
    () => ['focus', made.oneOf([1, 2, 3, 2 ** 60, '1', null, 0.5]), tab],
    () => ['says', { type: 'focus', req: made.value(1), tabId: made.value(1) }],
    () => ['open', tab, made.text(), made.below(4) === 0],
    () => ['open', tab, made.text(), made.below(4) === 0],
    () => ['sound', tab],
    () => ['sound', tab],
    () => ['sound', tab],
    () => ['silence', tab],
    () => ['navigate', tab, made.text()],
    () => ['close', tab],
    () => ['discard', tab, 10 + made.below(6)],
    () => ['activate', tab],
    () => ['hostExits'],
    () => ['hostExists', made.oneOf([true, false])],
    () => ['restartBackground'],
    () => ['restart'],
    () => ['grantSites'],
    () => ['revokeSites'],
    () => ['fireAlarms'],
    () => ['storageBreaks', made.oneOf([true, false])],
    () => ['passes', made.oneOf([1, 300, 5000, 70_000])],
  ])();
}

class Played {
  clock = new VirtualClock();
  browser = new FakeBrowser(this.clock);
  focused = [];  // [port, number] of each request that must be answered

  async play(steps) {
    await this.browser.start();
    for (const [name, ...values] of steps) {
      await this.#do(name, ...values);
      await settle();
      assert.ok(this.browser.ports.filter((port) => port.open).length <= 1, 'two ports are open');
      assert.ok(this.clock.waiting <= 20, `${this.clock.waiting} timers wait`);
    }
  }

  async #do(name, ...values) {
    const { browser } = this;
    const [id] = values;
    const needsTab = ['sound', 'silence', 'navigate', 'close', 'discard', 'activate'];
    if (needsTab.includes(name) && !browser.tabs.has(id)) return;
    if (name === 'discard' && browser.tabs.has(values[1])) return;
    switch (name) {
      case 'says':
        if (browser.port.open) await browser.says(values[0]);
        return;
      case 'focus':
        if (!browser.port.open) return;
        if (Number.isSafeInteger(values[0])) this.focused.push([browser.port, values[0]]);
        await browser.says({ type: 'focus', req: values[0], tabId: browser.named(values[1]) });
        return;
      case 'open':
        if (browser.tabs.has(id)) return;
        browser.openTab(id, { title: values[2] ? PRIVATE : values[1], incognito: values[2] });
        return;
      case 'hostExits':
        if (browser.port.open) await browser.hostExits();
        return;
      case 'hostExists':
        browser.hostExists = values[0];
        return;
      case 'storageBreaks':
        browser.session.broken = values[0];
        browser.local.broken = values[0];
        return;
      case 'passes':
        await this.clock.advance(values[0]);
        return;
      default:
        await browser[name](...values);
    }
  }

  get sent() {
    return this.browser.ports.flatMap((port) => port.sent);
  }
}

const isTitle = (text) => typeof text === 'string' && text.length <= 1000 && text.isWellFormed?.() !== false &&
  !/[\p{Control}\p{Bidi_Control}]/u.test(text);
const SHAPES = {
  hello: (message) => message.version === '1.2.3',
  audible: ({ tabId, title, host }) => Number.isSafeInteger(tabId) && isTitle(title) && typeof host === 'string',
  audibleCount: ({ count }) => Number.isSafeInteger(count) && count >= 0,
  focusResult: ({ req, ok }) => Number.isSafeInteger(req) && typeof ok === 'boolean',
};

async function played(steps) {
  const failures = [];
  const note = (reason) => failures.push(reason);
  process.on('unhandledRejection', note);
  try {
    const world = new Played();
    await world.play(steps);
    await settle();
    // A storage that is broken on purpose may fail; nothing else may.
    const unexpected = failures.filter((reason) => !/storage is broken/u.test(String(reason?.message)));
    assert.deepEqual(unexpected, [], 'a promise failed and nobody noticed');
    return world;
  } finally {
    process.off('unhandledRejection', note);
  }
}

const sequences = (made) => Array.from({ length: 1 + made.below(40) }, () => step(made));

test('whatever happens, the extension says only what Tollvane understands', async () => {
  await forAll(300, sequences, async (steps) => {
    for (const message of (await played(steps)).sent)
      assert.ok(SHAPES[message.type]?.(message), `it said ${JSON.stringify(message)}`);
  });
});

test('whatever happens, nothing of a private window is told', async () => {
  await forAll(300, sequences, async (steps) => {
    for (const message of (await played(steps)).sent) assert.notEqual(message.title, PRIVATE);
  });
});

test('each request to bring a tab forward gets one answer, on the port on which it came', async () => {
  // A background that ends, or cannot read what it kept, cannot answer.
  const isLeftOut = ([name, value]) => ['storageBreaks', 'restart', 'restartBackground'].includes(name) ||
    (name === 'says' && value?.type === 'focus');
  const peaceful = (made) => sequences(made).filter((each) => !isLeftOut(each));
  await forAll(300, peaceful, async (steps) => {
    const { focused, browser } = await played(steps);
    for (const port of browser.ports) {
      const asked = focused.filter(([each]) => each === port).map(([, number]) => number).sort();
      const answered = port.sent.filter(({ type }) => type === 'focusResult').map(({ req }) => req).sort();
      assert.deepEqual(answered, asked);
    }
  });
});

test('whatever happened, the link comes back within two minutes once the bridge works', async () => {
  await forAll(150, sequences, async (steps) => {
    const { browser, clock } = await played([...steps, ['storageBreaks', false], ['hostExists', true]]);
    await clock.advance(60_000);
    await browser.fireAlarms();
    await clock.advance(60_000);
    await browser.fireAlarms();
    assert.ok(browser.port.open, 'no port is open');
    await browser.says({ type: 'link', open: true });
    assert.equal((await browser.ask({ type: 'status' })).link, 'linked');
  });
});

test('what is kept stays small', async () => {
  const sounds = (made) => Array.from({ length: 700 }, (_, id) => [
    ['open', id + 1, made.text(), false], ['sound', id + 1], ['passes', 1]]).flat();
  await forAll(2, sounds, async (steps) => {
    const { browser } = await played(steps);
    assert.ok((browser.session.values.known ?? []).length <= MOST_KNOWN);
    assert.ok(JSON.stringify([browser.session.values, browser.local.values]).length < 50_000);
  });
});
