import assert from 'node:assert/strict';
import { beforeEach, test } from 'node:test';

import { FakeBrowser } from './fake_browser.js';
import { VirtualClock } from './virtual_clock.js';

let browser;
let requests;

beforeEach(async () => {
  requests = 0;
  browser = new FakeBrowser(new VirtualClock());
  await browser.start();
  browser.openWindow(2);
  browser.openTab(1, { active: true });
  browser.openTab(7);
  browser.openTab(8, { windowId: 2 });
});

// Sends "focus" for the tab that the browser now calls `id`, and returns whether the extension says that it brought the
// tab forward.
const focus = (id) => focusNamed(browser.named(id));

async function focusNamed(tabId) {
  const req = ++requests;
  await browser.says({ type: 'focus', req, tabId });
  const answers = browser.sent.filter((message) => message.type === 'focusResult' && message.req === req);
  assert.equal(answers.length, 1);
  return answers[0].ok;
}

test('a reported tab is brought forward', async () => {
  await browser.sound(7);
  assert.equal(await focus(7), true);
  assert.ok(browser.tabs.get(7).active);
});

test('its window is brought forward too, also out of the minimised state', async () => {
  browser.windows.get(2).minimised = true;
  await browser.sound(8);
  assert.equal(await focus(8), true);
  assert.deepEqual(browser.windows.get(2), { id: 2, focused: true, minimised: false });
});

test('a tab that was only named in an answer is brought forward', async () => {
  browser.tabs.get(7).audible = true;
  await browser.says({ type: 'whichAudible' });
  assert.equal(await focus(7), true);
});

test('a tab that moved to another window is brought forward there', async () => {
  await browser.sound(7);
  browser.tabs.get(7).windowId = 2;
  assert.equal(await focus(7), true);
  assert.ok(browser.windows.get(2).focused);
});

test('a closed tab is not brought forward', async () => {
  await browser.sound(7);
  await browser.close(7);
  assert.equal(await focus(7), false);
});

test('a tab whose closing was not reported is not brought forward', async () => {
  await browser.sound(7);
  browser.tabs.delete(7);
  assert.equal(await focus(7), false);
});

test('a tab that was never reported is left alone', async () => {
  assert.equal(await focus(7), false);
  assert.ok(!browser.tabs.get(7).active);
});

test('an id of an earlier run of the browser does not lead to the tab that has it now', async () => {
  await browser.sound(7);
  const yesterday = browser.named(7);
  await browser.restart();
  browser.openTab(7, { title: 'Another page' });
  assert.equal(await focusNamed(yesterday), false);
  await browser.sound(7);
  assert.equal(await focusNamed(yesterday), false);
  assert.ok(!browser.tabs.get(7).active);
});

test('a stopped background has not forgotten the tab', async () => {
  await browser.sound(7);
  const before = browser.named(7);
  await browser.restartBackground();
  assert.equal(await focusNamed(before), true);
});

test('nor when the tab was reported by the next background, too', async () => {
  await browser.sound(7);
  const before = browser.named(7);
  await browser.restartBackground();
  await browser.silence(7);
  await browser.sound(7);
  assert.equal(await focus(7), true);
  assert.equal(await focusNamed(before), true);
});

test('a request that wakes the background is answered from its memory', async () => {
  await browser.sound(7);
  const tabId = browser.named(7);
  browser.stopBackground();
  const started = browser.start();
  browser.port.onMessage.fire({ type: 'focus', req: 5, tabId });
  await started;
  assert.deepEqual(browser.sent.at(-1), { type: 'focusResult', req: 5, ok: true });
});

test('a discarded tab is found under its new id', async () => {
  await browser.sound(7);
  await browser.discard(7, 70);
  assert.equal(await focus(7), true);
  assert.ok(browser.tabs.get(70).active);
});

test('a tab that was discarded twice is found, even if the background was stopped in between', async () => {
  await browser.sound(7);
  const first = browser.named(7);
  await browser.discard(7, 70);
  await browser.restartBackground();
  await browser.discard(70, 700);
  assert.equal(await focusNamed(first), true);
  assert.ok(browser.tabs.get(700).active);
});

test('the new id of a discarded tab counts only once it was reported itself', async () => {
  await browser.sound(7);
  await browser.discard(7, 70);
  assert.equal(await focus(70), false);
  await browser.sound(70);
  assert.equal(await focus(70), true);
  assert.equal(await focus(7), true);
});

test('a discarded tab that was closed is not found', async () => {
  await browser.sound(7);
  await browser.discard(7, 70);
  await browser.close(70);
  assert.equal(await focus(7), false);
});

test('closed tabs are forgotten', async () => {
  for (let id = 100; id < 200; id++) {
    browser.openTab(id);
    await browser.sound(id);
    await browser.close(id);
  }
  assert.deepEqual(browser.session.values.known, []);
});

test('of a tab that is reported in endlessly many lives of the background the newest ids are known', async () => {
  for (let life = 0; life < 600; life++) {
    await browser.restartBackground();
    await browser.sound(7);
    await browser.silence(7);
  }
  assert.equal(browser.session.values.known.length, 500);
  assert.equal(await focus(7), true);
});

test('the number that the browser gives the tab leads nowhere: another profile may have one like it', async () => {
  await browser.sound(7);
  assert.equal(await focusNamed(7), false);
});

test('an id that another profile reported leads nowhere', async () => {
  await browser.sound(7);
  const other = new FakeBrowser(new VirtualClock());
  other.run = browser.run;
  await other.start();
  other.openTab(7);
  await other.sound(7);
  assert.equal(await focusNamed(other.named(7)), false);
  assert.ok(!browser.tabs.get(7).active);
});

// The bridge names the browser's process.
const theBrowserIs = (name) => browser.says({ type: 'link', open: true, browser: name });

for (const [what, reload] of [
  ['a reload of the extension', () => browser.reloadExtension()],
  ['a reload with what the background before it wrote at its end', () => browser.reloadExtension({ failures: 1 })],
  ['a background that ends before the bridge has spoken', async () => {
    await browser.reloadExtension();
    await browser.restartBackground();
  }],
]) {
  test(`${what} does not forget the tab`, async () => {
    await theBrowserIs('4711');
    await browser.sound(7);
    const before = browser.named(7);
    await reload();
    await theBrowserIs('4711');
    assert.equal(await focusNamed(before), true);
  });
}

test('two reloads in a row do not forget the tab, nor does one that is reported before the bridge has spoken', async () => {
  await browser.sound(7);
  const first = browser.named(7);
  await theBrowserIs('4711');
  await browser.reloadExtension();
  await browser.sound(8);
  const second = browser.named(8);
  await theBrowserIs('4711');
  await browser.reloadExtension();
  await theBrowserIs('4711');
  assert.equal(await focusNamed(first), true);
  assert.equal(await focusNamed(second), true);
});

test('a request right behind the first words of the bridge finds the tab', async () => {
  await theBrowserIs('4711');
  await browser.sound(7);
  const tabId = browser.named(7);
  await browser.reloadExtension();
  browser.port.onMessage.fire({ type: 'link', open: true, browser: '4711' });
  await browser.says({ type: 'focus', req: 5, tabId });
  assert.deepEqual(browser.sent.at(-1), { type: 'focusResult', req: 5, ok: true });
});

test('another process of the browser is another run, and what was kept is dropped', async () => {
  await theBrowserIs('4711');
  await browser.sound(7);
  const before = browser.named(7);
  await browser.reloadExtension();
  await theBrowserIs('4712');
  assert.equal(await focusNamed(before), false);
  assert.deepEqual(browser.local.values, {});
});

test('a browser that says it has just started has no earlier ids, whatever the bridge says', async () => {
  await theBrowserIs('4711');
  await browser.sound(7);
  const before = browser.named(7);
  await browser.restart();
  browser.openTab(7);
  await theBrowserIs('4711');
  assert.equal(await focusNamed(before), false);
});

test('a tab that was closed is not kept', async () => {
  await theBrowserIs('4711');
  await browser.sound(7);
  await browser.close(7);
  assert.deepEqual(browser.local.values.kept.known, []);
});

for (const nonsense of [undefined, null, 7, {}]) {
  test(`a bridge that calls the browser ${JSON.stringify(nonsense)} has nothing kept`, async () => {
    await theBrowserIs(nonsense);
    await browser.sound(7);
    assert.deepEqual(browser.local.values, {});
    assert.equal(await focus(7), true);
  });
}

for (const tabId of [undefined, null, '7', 7.5, 1e300, -1, true, [7], { 7: 7 }, '__proto__', 'constructor']) {
  test(`the tab id ${JSON.stringify(tabId)} is no tab`, async () => {
    await browser.sound(7);
    assert.equal(await focusNamed(tabId), false);
  });
}

test('two requests at once are both answered', async () => {
  await browser.sound(7);
  browser.port.onMessage.fire({ type: 'focus', req: 1, tabId: browser.named(7) });
  await browser.says({ type: 'focus', req: 2, tabId: 99 });
  const answers = browser.sent.filter(({ type }) => type === 'focusResult');
  assert.deepEqual(Object.fromEntries(answers.map(({ req, ok }) => [req, ok])), { 1: true, 2: false });
});
