import assert from 'node:assert/strict';
import { beforeEach, test } from 'node:test';

import { FakeBrowser } from './fake_browser.js';
import { VirtualClock, settle } from './virtual_clock.js';

let browser;

beforeEach(async () => {
  browser = new FakeBrowser(new VirtualClock());
  browser.siteAccess = true;
  await browser.start();
  browser.openWindow(2);
  browser.openTab(1, { active: true });
  browser.openTab(7);
  browser.openTab(8, { windowId: 2, active: true });
});

const turn = (markTabs) => browser.says({ type: 'settings', markTabs });
const marked = () => [...browser.marked].sort((a, b) => a - b);

test('a background tab that sounds is marked', async () => {
  await turn(true);
  await browser.sound(7);
  assert.deepEqual(marked(), [7]);
});

test('nothing is marked while Tollvane has not asked for it', async () => {
  await browser.sound(7);
  assert.deepEqual(marked(), []);
});

test('nothing is marked when Tollvane does not want it', async () => {
  await turn(false);
  await browser.sound(7);
  assert.deepEqual(marked(), []);
});

test('the tab that the user looks at is not marked', async () => {
  await turn(true);
  await browser.sound(1);
  assert.deepEqual(marked(), []);
});

test('a tab that began to sound in front is not marked when the user turns to another tab', async () => {
  await turn(true);
  await browser.sound(1);
  await browser.activate(7);
  assert.deepEqual(marked(), []);
});

test('the front tab of a window in the background is marked', async () => {
  await turn(true);
  await browser.sound(8);
  assert.deepEqual(marked(), [8]);
});

test('the front tab is marked when the browser itself is in the background', async () => {
  await turn(true);
  await browser.focusWindow(-1);
  await browser.sound(1);
  assert.deepEqual(marked(), [1]);
});

test('a private tab is never marked', async () => {
  browser.openTab(9, { incognito: true });
  await turn(true);
  await browser.sound(9);
  assert.deepEqual(browser.injected, []);
});

test('a muted tab is not marked', async () => {
  await turn(true);
  await browser.mute(7);
  await browser.sound(7);
  assert.deepEqual(marked(), []);
});

test('turning to the tab takes the mark away', async () => {
  await turn(true);
  await browser.sound(7);
  await browser.activate(7);
  assert.deepEqual(marked(), []);
});

test('turning to its window takes the mark away', async () => {
  await turn(true);
  await browser.sound(8);
  await browser.focusWindow(2);
  assert.deepEqual(marked(), []);
});

test('leaving the browser takes no mark away', async () => {
  await turn(true);
  await browser.sound(8);
  await browser.focusWindow(-1);
  assert.deepEqual(marked(), [8]);
});

test('being brought forward by Tollvane takes the mark away', async () => {
  await turn(true);
  await browser.sound(7);
  await browser.says({ type: 'focus', req: 1, tabId: browser.named(7) });
  assert.deepEqual(marked(), []);
});

test('being brought forward takes the mark away even if the browser reports no change', async () => {
  await turn(true);
  await browser.sound(8);
  browser.api.tabs.update = async (id) => ({ ...browser.tabs.get(id) });
  browser.api.windows.update = async () => {};
  await browser.says({ type: 'focus', req: 1, tabId: browser.named(8) });
  assert.deepEqual(marked(), []);
});

test('a second sound after the visit marks again', async () => {
  await turn(true);
  await browser.sound(7);
  await browser.activate(7);
  await browser.activate(1);
  await browser.silence(7);
  await browser.sound(7);
  assert.deepEqual(marked(), [7]);
});

test('turning the setting off takes all marks away', async () => {
  await turn(true);
  await browser.sound(7);
  await browser.sound(8);
  await turn(false);
  assert.deepEqual(marked(), []);
});

test('turning it on marks the tabs that sounded before and were not visited', async () => {
  await browser.sound(7);
  await browser.sound(8);
  await browser.focusWindow(2);
  await turn(true);
  assert.deepEqual(marked(), [7]);
});

test('a tab in the background that loads another page is marked again', async () => {
  await turn(true);
  await browser.sound(7);
  await browser.load(7);
  assert.deepEqual(marked(), [7]);
});

test('a tab that loads another page after the visit is not marked', async () => {
  await turn(true);
  await browser.sound(7);
  await browser.activate(7);
  await browser.load(7);
  assert.deepEqual(marked(), []);
});

test('pages that made no sound are not touched when they load', async () => {
  await turn(true);
  await browser.load(7);
  assert.deepEqual(browser.injected, []);
});

test('without access to the pages nothing is marked and nothing breaks', async () => {
  browser.siteAccess = false;
  await turn(true);
  await browser.sound(7);
  assert.deepEqual(marked(), []);
  assert.equal(browser.sent.at(-1).type, 'audible');
});

test('giving access marks what sounded before', async () => {
  browser.siteAccess = false;
  await turn(true);
  await browser.sound(7);
  await browser.grantSites();
  assert.deepEqual(marked(), [7]);
});

test('taking access back takes the marks away', async () => {
  await turn(true);
  await browser.sound(7);
  await browser.revokeSites();
  assert.deepEqual(marked(), []);
});

test('a tab that is visited while its page is still loading is not marked afterwards', async () => {
  await turn(true);
  let loaded;
  browser.beforeInjection = () => new Promise((done) => (loaded = done));
  await browser.sound(7);
  await browser.activate(7);
  loaded();
  await settle();
  assert.deepEqual(marked(), []);
});

test('a setting that is turned off while a page is still loading also applies to that page', async () => {
  await turn(true);
  let loaded;
  browser.beforeInjection = () => new Promise((done) => (loaded = done));
  await browser.sound(7);
  await turn(false);
  loaded();
  await settle();
  assert.deepEqual(marked(), []);
});

test('a stopped background still takes away what it marked', async () => {
  await turn(true);
  await browser.sound(7);
  await browser.restartBackground();
  await browser.activate(7);
  assert.deepEqual(marked(), []);
});

test('a background woken by a sound marks without waiting for Tollvane', async () => {
  await turn(true);
  await browser.restartBackground();
  await browser.sound(7);
  assert.deepEqual(marked(), [7]);
});

test('a discarded tab that loads again is marked until visited', async () => {
  await turn(true);
  await browser.sound(7);
  await browser.discard(7, 70);
  await browser.load(70);
  assert.deepEqual(marked(), [70]);
});

test('closed tabs are forgotten', async () => {
  await browser.sound(7);
  await browser.close(7);
  assert.deepEqual(browser.session.values.unvisited, []);
});

test('a tab that sounds often is remembered once', async () => {
  for (let i = 0; i < 100; i++) {
    await browser.sound(7);
    await browser.silence(7);
  }
  assert.deepEqual(browser.session.values.unvisited, [7]);
});

// --- asking for access ---

test('access is not asked for at the first contact', async () => {
  browser.siteAccess = false;
  await turn(true);
  assert.equal(browser.optionsOpened, 0);
});

test('turning the marks on in Tollvane opens the page that asks for access', async () => {
  browser.siteAccess = false;
  await turn(false);
  await turn(true);
  assert.equal(browser.optionsOpened, 1);
});

test('getting the same setting again opens nothing', async () => {
  browser.siteAccess = false;
  await turn(false);
  await turn(true);
  await turn(true);
  await browser.restartBackground();
  await turn(true);
  assert.equal(browser.optionsOpened, 1);
});

test('if access is given already, nothing is opened', async () => {
  await turn(false);
  await turn(true);
  assert.equal(browser.optionsOpened, 0);
});

test('turning the marks off opens nothing', async () => {
  browser.siteAccess = false;
  await turn(true);
  await turn(false);
  assert.equal(browser.optionsOpened, 0);
});
