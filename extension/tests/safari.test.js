// Tests of the extension in Safari, with a stand-in for Safari's native messaging, and of what is packed for Safari.

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { beforeEach, test } from 'node:test';

import { safariApi } from '../safari/safari_api.js';
import { FakeBrowser } from './fake_browser.js';
import { VirtualClock, settle } from './virtual_clock.js';

let browser;
let written;

// Safari's objects refuse calls on anything but themselves, as these do.
const inSafari = (api) => {
  const { runtime } = api;
  const { getManifest } = runtime;
  runtime.getManifest = function () {
    assert.equal(this, runtime);
    return getManifest();
  };
  runtime.sendNativeMessage = async function (application, message) {
    assert.equal(this, runtime);
    written.push(message);
    throw new Error('the handler ended early');
  };
  delete runtime.onUpdateAvailable;
  return safariApi(api);
};
const tell = async (message) => {
  browser.port.onMessage.fire(message);
  await settle();
};

beforeEach(async () => {
  browser = new FakeBrowser(new VirtualClock());
  written = [];
  await browser.start(inSafari);
});

test('says hello to the native handler, and nothing over the port', () => {
  assert.deepEqual(written, [{ type: 'hello', version: '1.2.3' }]);
  assert.deepEqual(browser.port.sent, []);
});

test('messages named "tollvane" are Tollvane\'s', async () => {
  await tell({ name: 'tollvane', userInfo: { type: 'whichAudible' } });
  assert.deepEqual(written.slice(1), [{ type: 'audibleCount', count: 0 }]);
});

test('other messages are ignored', async () => {
  for (const message of [{ name: 'other', userInfo: { type: 'whichAudible' } }, {}, undefined]) await tell(message);
  assert.equal(written.length, 1);
});

test('a message for which the handler fails is lost, and the next one is sent', async () => {
  await tell({ name: 'tollvane', userInfo: { type: 'whichAudible' } });
  await tell({ name: 'tollvane', userInfo: { type: 'whichAudible' } });
  assert.equal(written.length, 3);
});

test('the packed extension has every script that another one needs, and a manifest that Safari knows', () => {
  const out = mkdtempSync(join(tmpdir(), 'tollvane-safari-'));
  try {
    execFileSync(new URL('../safari/package.sh', import.meta.url).pathname, [out], { cwd: '/' });
    const manifest = JSON.parse(readFileSync(join(out, 'manifest.json'), 'utf8'));
    assert.deepEqual(manifest.background, { scripts: ['src/background.js'], type: 'module', persistent: false });
    assert.equal(manifest.key, undefined);
    assert.deepEqual(Object.keys(manifest.browser_specific_settings), ['safari']);
    assert.ok(readFileSync(join(out, 'src/background.js'), 'utf8').includes('safariApi'));
    for (const name of readdirSync(join(out, 'src')).filter((each) => each.endsWith('.js'))) {
      const imports = readFileSync(join(out, 'src', name), 'utf8').matchAll(/^import .* from '\.\/(.*)';$/gm);
      for (const [, wanted] of imports) assert.ok(existsSync(join(out, 'src', wanted)), wanted);
    }
    for (const icon of Object.values(manifest.icons)) assert.ok(existsSync(join(out, icon)), icon);
  } finally {
    rmSync(out, { recursive: true });
  }
});
