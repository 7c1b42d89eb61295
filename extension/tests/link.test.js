import assert from 'node:assert/strict';
import { beforeEach, test } from 'node:test';

import { FakeBrowser } from './fake_browser.js';
import { VirtualClock, settle } from './virtual_clock.js';

const MINUTE = 60_000;
let clock;
let browser;

beforeEach(() => {
  clock = new VirtualClock();
  browser = new FakeBrowser(clock);
});

const failedAttempts = async (milliseconds) => {
  const before = browser.ports.length;
  await clock.advance(milliseconds);
  await settle();
  return browser.ports.length - before;
};

test('says hello with its version on connecting', async () => {
  await browser.start();
  assert.equal(browser.port.host, 'com.quarnel.tollvane');
  assert.deepEqual(browser.sent, [{ type: 'hello', version: '1.2.3' }]);
});

test('connects and listens before the background script returns to the browser', () => {
  browser.start();
  assert.equal(browser.ports.length, 1);
  const { runtime, tabs, windows, alarms, permissions, action } = browser.api;
  const wakers = [runtime.onStartup, runtime.onInstalled, runtime.onUpdateAvailable, runtime.onMessage, tabs.onUpdated,
    tabs.onRemoved, tabs.onReplaced, tabs.onActivated, windows.onFocusChanged, alarms.onAlarm, permissions.onAdded,
    permissions.onRemoved, action.onClicked];
  assert.ok(wakers.every((event) => event.isHeard));
});

test('comes back a quarter of a second after the host died, and says hello again', async () => {
  await browser.start();
  await clock.advance(15_000);
  await browser.hostExits();
  await clock.advance(249);
  assert.equal(browser.ports.length, 1);
  await clock.advance(1);
  assert.equal(browser.ports.length, 2);
  assert.deepEqual(browser.sent, [{ type: 'hello', version: '1.2.3' }]);
});

test('waits twice as long after each failure', async () => {
  await browser.start();
  for (const delay of [250, 500, 1000, 2000, 4000, 8000, 16_000]) {
    await browser.hostExits();
    assert.equal(await failedAttempts(delay - 1), 0, `before ${delay}`);
    assert.equal(await failedAttempts(1), 1, `at ${delay}`);
  }
});

test('a host that dies soon again and again does not shorten the delays', async () => {
  await browser.start();
  for (let i = 0; i < 3; i++) {
    await browser.says({ type: 'settings', markTabs: false });
    await browser.hostExits();
    await clock.advance(250 * 2 ** i);
  }
  await browser.hostExits();
  assert.equal(await failedAttempts(1999), 0);
});

test('a link that lasted makes the next wait short again', async () => {
  await browser.start();
  for (let i = 0; i < 5; i++) {
    await browser.hostExits();
    await clock.advance(250 * 2 ** i);
  }
  await clock.advance(10_000);
  await browser.hostExits();
  assert.equal(await failedAttempts(250), 1);
});

test('after half a minute of failures only the alarm is left, once a minute', async () => {
  browser.hostExists = false;
  await browser.start();
  await settle();
  assert.equal(await failedAttempts(MINUTE), 7);
  assert.equal(clock.waiting, 0);
  assert.deepEqual([...browser.alarms.values()], [{ delayInMinutes: 1, periodInMinutes: 1 }]);
  const before = browser.ports.length;
  await browser.fireAlarms();
  assert.equal(browser.ports.length, before + 1);
});

test('the alarm finds a host that appeared, and is then cleared', async () => {
  browser.hostExists = false;
  await browser.start();
  await clock.advance(MINUTE);
  browser.hostExists = true;
  await browser.fireAlarms();
  assert.ok(browser.port.open);
  await browser.fireAlarms();
  assert.equal(browser.alarms.size, 0);
  assert.ok(browser.port.open);
});

test('an alarm of another name does nothing', async () => {
  browser.hostExists = false;
  await browser.start();
  await clock.advance(MINUTE);
  const before = browser.ports.length;
  browser.api.alarms.onAlarm.fire({ name: 'another' });
  assert.equal(browser.ports.length, before);
});

test('a background that was stopped connects at once when it is woken', async () => {
  await browser.start();
  await browser.restartBackground();
  assert.equal(browser.ports.length, 2);
  assert.deepEqual(browser.sent, [{ type: 'hello', version: '1.2.3' }]);
});

test('a background woken without a host tries once and leaves the rest to the alarm', async () => {
  browser.hostExists = false;
  await browser.start();
  await clock.advance(MINUTE);
  browser.stopBackground();
  const before = browser.ports.length;
  await browser.start();
  await clock.advance(MINUTE);
  assert.equal(browser.ports.length, before + 1);
});

test('a browser that refuses to start the host at all is tried again', async () => {
  let refusals = 0;
  const started = browser.start();
  await started;
  await browser.hostExits();
  const { connectNative } = browser.api.runtime;
  browser.api.runtime.connectNative = () => {
    refusals++;
    throw new Error('no permission');
  };
  await clock.advance(250);
  assert.equal(refusals, 1);
  browser.api.runtime.connectNative = connectNative;
  assert.equal(await failedAttempts(500), 1);
});

test('messages from an old port are ignored', async () => {
  await browser.start();
  const old = browser.port;
  await browser.hostExits();
  await clock.advance(250);
  browser.openTab(7, { audible: true });
  old.onMessage.fire({ type: 'whichAudible' });
  old.onDisconnect.fire(old);
  await settle();
  await clock.advance(MINUTE);
  assert.equal(browser.ports.length, 2);
  assert.deepEqual(browser.sent, [{ type: 'hello', version: '1.2.3' }]);
});

test('a sound while there is no link is lost, and breaks nothing', async () => {
  await browser.start();
  browser.openTab(7);
  await browser.hostExits();
  await browser.sound(7);
  await clock.advance(250);
  assert.deepEqual(browser.sent, [{ type: 'hello', version: '1.2.3' }]);
});

test('a port that breaks under a message breaks nothing', async () => {
  await browser.start();
  browser.openTab(7);
  browser.port.open = false;
  await browser.sound(7);
  await browser.hostExits();
  await clock.advance(250);
  assert.equal(browser.ports.length, 2);
});

for (const nonsense of [null, 7, 'focus', [], {}, { type: 7 }, { type: 'unheard of' }, { type: 'settings' },
  { type: 'settings', markTabs: 'yes' }, { type: 'focus' }, { type: 'focus', req: '1', tabId: 1 },
  { type: 'focus', req: 1.5, tabId: 1 }]) {
  test(`ignores ${JSON.stringify(nonsense)}`, async () => {
    await browser.start();
    await browser.says(nonsense);
    assert.equal(browser.sent.length, 1);
    assert.equal(browser.session.values.markTabs, undefined);
  });
}

test('a storage that fails does not stop the link', async () => {
  browser.session.broken = true;
  browser.local.broken = true;
  await browser.start();
  browser.openTab(7);
  await browser.sound(7);
  await browser.says({ type: 'focus', req: 1, tabId: 7 });
  assert.deepEqual(browser.sent.map(({ type }) => type), ['hello', 'audible', 'focusResult']);
});
