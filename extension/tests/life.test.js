// Tests of updates of the extension, of the status for the options page, and of the button.

import assert from 'node:assert/strict';
import { beforeEach, test } from 'node:test';

import { describe } from '../src/options_text.js';
import { FakeBrowser } from './fake_browser.js';
import { VirtualClock, settle } from './virtual_clock.js';

let clock;
let browser;

beforeEach(async () => {
  clock = new VirtualClock();
  browser = new FakeBrowser(clock);
  browser.siteAccess = true;
  await browser.start();
  browser.openTab(1, { active: true });
  browser.openTab(7);
});

// The browser has a new version of the extension, and runs it when the old one reloads.
async function update({ after = 500 } = {}) {
  browser.api.runtime.onUpdateAvailable.fire({ version: '1.2.4' });
  await settle();
  assert.equal(browser.reloads, 1);
  browser.stopBackground();
  browser.session.values = {};
  await clock.advance(after);
  await browser.start();
}

// Plays in a tab, and returns whether it is still found under that report's id when `after` has happened.
const isFoundAfter = async (after) => {
  await browser.sound(7);
  const tabId = browser.named(7);
  await after();
  await browser.says({ type: 'focus', req: 1, tabId });
  return browser.sent.at(-1).ok;
};

test('an update is installed at once', async () => {
  browser.api.runtime.onUpdateAvailable.fire({ version: '1.2.4' });
  await settle();
  assert.equal(browser.reloads, 1);
});

test('an updated extension connects again, and says hello', async () => {
  await update();
  assert.equal(browser.sent[0].type, 'hello');
});

test('a tab that was reported before an update is found after it', async () => {
  assert.equal(await isFoundAfter(update), true);
});

test('an update takes its marks out of the pages, and puts them in again', async () => {
  await browser.says({ type: 'settings', markTabs: true });
  await browser.sound(7);
  const { length } = browser.injected;
  browser.api.runtime.onUpdateAvailable.fire({ version: '1.2.4' });
  await settle();
  assert.equal(browser.marked.size, 0);
  browser.stopBackground();
  browser.session.values = {};
  await browser.start();
  assert.deepEqual(browser.injected.slice(length), [7]);
  await browser.activate(7);
  assert.equal(browser.marked.size, 0);
});

test('values carried over by an update are used once', async () => {
  const found = await isFoundAfter(async () => {
    await update();
    assert.deepEqual(browser.local.values, {});
    await browser.restart();
    browser.openTab(7);
  });
  assert.equal(found, false);
});

test('values carried over long ago belong to another run of the browser, and are dropped', async () => {
  assert.equal(await isFoundAfter(() => update({ after: 61_000 })), false);
  assert.deepEqual(browser.local.values, {});
});

test('a clock that was set back does not make old values valid', async () => {
  assert.equal(await isFoundAfter(() => update({ after: -3_600_000 })), false);
});

test('nothing but numbers of tabs is kept on the disk', async () => {
  await browser.says({ type: 'link', open: true, browser: '4711' });
  await browser.sound(7);
  await browser.says({ type: 'settings', markTabs: true });
  assert.deepEqual(browser.local.values, { kept: { browser: '4711', known: [[browser.named(7), 7]] } });
});

test('the button opens the options page', () => {
  browser.api.action.onClicked.fire({});
  assert.equal(browser.optionsOpened, 1);
});

test('the options page gets the state of the link and the setting', async () => {
  assert.deepEqual(await browser.ask({ type: 'status' }), { link: 'unknown', markTabs: undefined });
  await browser.says({ type: 'settings', markTabs: true });
  assert.deepEqual(await browser.ask({ type: 'status' }), { link: 'linked', markTabs: true });
  await browser.hostExits();
  assert.deepEqual(await browser.ask({ type: 'status' }), { link: 'missing', markTabs: true });
});

// What the options page is told, and sees in session storage when it changes.
async function link() {
  const { link } = await browser.ask({ type: 'status' });
  assert.equal(browser.session.values.link ?? 'unknown', link);
  return link;
}

test('the link is there only while Tollvane itself is', async () => {
  await browser.says({ type: 'link', open: false });
  assert.equal(await link(), 'waiting');
  await browser.says({ type: 'link', open: true });
  assert.equal(await link(), 'linked');
  await browser.says({ type: 'link', open: false });
  assert.equal(await link(), 'waiting');
  await browser.hostExits();
  assert.equal(await link(), 'missing');
});

test('a bridge that does not tell of Tollvane is believed as soon as Tollvane speaks', async () => {
  await browser.says({ type: 'whichAudible' });
  assert.equal(await link(), 'linked');
});

test('what a background knew of the link is no news to the next one', async () => {
  await browser.says({ type: 'link', open: true });
  await browser.restartBackground();
  assert.equal(await link(), 'unknown');
  await browser.says({ type: 'link', open: false });
  assert.equal(await link(), 'waiting');
});

test('other questions are not answered', () => {
  const results = browser.api.runtime.onMessage.fire({ type: 'unmark' }, {}, () => assert.fail('answered'));
  assert.deepEqual(results, [false]);
});

test('the page says where Tollvane is', () => {
  assert.equal(describe({}).state, 'unknown');
  assert.equal(describe({ link: 'toString' }).state, 'unknown');
  assert.match(describe({ link: 'linked' }).status, /^Linked/);
  assert.match(describe({ link: 'waiting' }).status, /not running/);
  assert.match(describe({ link: 'missing' }).status, /not found/);
  for (const state of ['linked', 'waiting', 'missing']) assert.equal(describe({ link: state }).state, state);
});

test('the page says what is missing for marks', () => {
  assert.match(describe({ markTabs: true, allowed: false }).hint, /waits for this switch/);
  assert.match(describe({ markTabs: false, allowed: true }).hint, /settings of Tollvane/);
  assert.match(describe({ markTabs: true, allowed: true }).hint, /^On\./);
  assert.equal(describe({ markTabs: false, allowed: false }).hint, '');
});
