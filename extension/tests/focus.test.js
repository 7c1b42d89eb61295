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

// Sends "focus" and returns whether the extension says that it brought the tab forward.
async function focus(tabId) {
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
  await browser.restart();
  browser.openTab(7, { title: 'Another page' });
  assert.equal(await focus(7), false);
  assert.ok(!browser.tabs.get(7).active);
});

test('a stopped background has not forgotten the tab', async () => {
  await browser.sound(7);
  await browser.restartBackground();
  assert.equal(await focus(7), true);
});

test('a request that wakes the background is answered from its memory', async () => {
  await browser.sound(7);
  browser.stopBackground();
  const started = browser.start();
  browser.port.onMessage.fire({ type: 'focus', req: 5, tabId: 7 });
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
  await browser.discard(7, 70);
  await browser.restartBackground();
  await browser.discard(70, 700);
  assert.equal(await focus(7), true);
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
  assert.deepEqual(browser.session.values.reported, {});
});

for (const tabId of [undefined, null, '7', 7.5, 1e300, -1, true, [7], { 7: 7 }, '__proto__', 'constructor']) {
  test(`the tab id ${JSON.stringify(tabId)} is no tab`, async () => {
    await browser.sound(7);
    assert.equal(await focus(tabId), false);
  });
}

test('two requests at once are both answered', async () => {
  await browser.sound(7);
  browser.port.onMessage.fire({ type: 'focus', req: 1, tabId: 7 });
  await browser.says({ type: 'focus', req: 2, tabId: 99 });
  const answers = browser.sent.filter(({ type }) => type === 'focusResult');
  assert.deepEqual(Object.fromEntries(answers.map(({ req, ok }) => [req, ok])), { 1: true, 2: false });
});
