// Tests of the manifest and of the packages. Needs zip, unzip and jq.

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { existsSync, mkdtempSync, readFileSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';

const root = new URL('..', import.meta.url).pathname;
const manifest = JSON.parse(readFileSync(join(root, 'manifest.json'), 'utf8'));
let directory;
let out;

const pack = (into) => execFileSync(join(root, 'package.sh'), [into], { cwd: '/' });
const names = (archive) => execFileSync('unzip', ['-Z1', archive], { encoding: 'utf8' }).trim().split('\n');
const read = (archive, name) => execFileSync('unzip', ['-p', archive, name]);
const hash = (file) => createHash('sha256').update(readFileSync(file)).digest('hex');
const allFiles = (folder) =>
  readdirSync(folder, { withFileTypes: true }).flatMap((entry) =>
    entry.isDirectory()
      ? allFiles(join(folder, entry.name)).map((name) => `${entry.name}/${name}`)
      : [entry.name]);

before(() => {
  directory = mkdtempSync(join(tmpdir(), 'tollvane-package-'));
  out = join(directory, 'with a space');
  pack(out);
});
after(() => rmSync(directory, { recursive: true }));

// Computes the id as the browser does.
test('the unpacked extension has the id that Tollvane expects', () => {
  const digest = createHash('sha256').update(Buffer.from(manifest.key, 'base64')).digest('hex').slice(0, 32);
  const id = [...digest].map((digit) => String.fromCharCode(97 + parseInt(digit, 16))).join('');
  assert.equal(id, 'obnkhebafdebfkbooeekkekkklllpdhc');
  assert.ok(readFileSync(join(root, 'README.md'), 'utf8').includes(id));
});

test('no permission is asked for that the README does not justify', () => {
  const readme = readFileSync(join(root, 'README.md'), 'utf8');
  for (const permission of [...manifest.permissions, ...manifest.optional_host_permissions]) {
    assert.ok(readme.includes(`| \`${permission}\` |`), permission);
  }
  assert.equal(manifest.host_permissions, undefined);
});

test('private windows are out of reach', () => assert.equal(manifest.incognito, 'not_allowed'));

test('every file that is mentioned somewhere is in the package', () => {
  const files = new Set(names(join(out, 'firefox/tollvane.xpi')));
  const named = [manifest.background.service_worker, ...manifest.background.scripts, manifest.options_ui.page,
    ...Object.values(manifest.icons), 'src/page_mark.js', 'src/options.css', 'src/options.js', 'icons/bell.svg'];
  for (const script of [...files].filter((name) => name.endsWith('.js'))) {
    const imports = readFileSync(join(root, script), 'utf8').matchAll(/^import .* from '\.\/(.*)';$/gm);
    for (const [, name] of imports) named.push(`src/${name}`);
  }
  assert.ok(named.length > 12);
  for (const name of named) assert.ok(files.has(name), name);
});

test('all three forms hold the same files, and nothing of the tests', () => {
  const files = allFiles(join(out, 'chromium')).sort();
  assert.deepEqual(names(join(out, 'firefox/tollvane.xpi')).sort(), files);
  assert.deepEqual(names(join(out, 'tollvane-chromium.zip')).sort(), files);
  assert.ok(files.every((name) => /^(manifest\.json|src\/\w+\.(js|html|css)|icons\/bell(-\d+\.png|\.svg))$/.test(name)));
});

test('the unpacked form has the unchanged manifest', () => {
  assert.deepEqual(readFileSync(join(out, 'chromium/manifest.json')), readFileSync(join(root, 'manifest.json')));
});

test('the form for Firefox lacks only what Firefox does not know', () => {
  const { key, minimum_chrome_version, background, ...rest } = manifest;
  const { service_worker, ...ofFirefox } = background;
  assert.ok(key && minimum_chrome_version && service_worker);
  assert.deepEqual(JSON.parse(read(join(out, 'firefox/tollvane.xpi'), 'manifest.json')),
    { ...rest, background: ofFirefox });
});

test('the form for a store has no key, and is otherwise the same', () => {
  const { key, ...rest } = manifest;
  assert.ok(key);
  assert.deepEqual(JSON.parse(read(join(out, 'tollvane-chromium.zip'), 'manifest.json')), rest);
});

test('packing again makes the same bytes', () => {
  const again = join(directory, 'again');
  pack(again);
  for (const name of ['firefox/tollvane.xpi', 'tollvane-chromium.zip']) {
    assert.equal(hash(join(again, name)), hash(join(out, name)), name);
  }
});

test('packing into the same place leaves nothing old behind', () => {
  const again = join(directory, 'stale');
  pack(again);
  execFileSync('touch', [join(again, 'chromium/src/old.js')]);
  pack(again);
  assert.ok(!existsSync(join(again, 'chromium/src/old.js')));
});

test('the icons are as large as they are called', () => {
  for (const [size, name] of Object.entries(manifest.icons)) {
    const png = readFileSync(join(root, name));
    assert.equal(png.toString('latin1', 1, 4), 'PNG');
    assert.deepEqual([png.readUInt32BE(16), png.readUInt32BE(20)], [Number(size), Number(size)]);
  }
});
