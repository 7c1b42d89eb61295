// Tests of the script that is injected into pages, in a fake page.

import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { beforeEach, test } from 'node:test';
import { Script, createContext } from 'node:vm';

import { VirtualClock, settle } from './virtual_clock.js';

const script = new Script(readFileSync(new URL('../src/page_mark.js', import.meta.url), 'utf8'));

// A fake document, whose title is trimmed and whose observers are told later, as in a real one.
class Page {
  head = {};
  visibilityState = 'hidden';
  writes = 0;
  hasTitles = true;
  observers = new Set();
  listeners = {};
  #title;

  constructor(title, clock) {
    this.#title = title;
    const page = this;
    this.runtime = { id: 'tollvane', onMessage: { addListener: (listener) => (this.tell = listener) } };
    this.world = createContext({
      document: this,
      chrome: { runtime: this.runtime },
      performance: { now: () => clock.now() },
      setTimeout: (call, delay) => clock.setTimeout(call, delay),
      clearTimeout: (timer) => clock.clearTimeout(timer),
      MutationObserver: class {
        constructor(call) {
          this.observer = { call, told: false };
        }
        observe(node) {
          assert.equal(node, page.head ?? page.documentElement);
          page.observers.add(this.observer);
        }
        disconnect() {
          page.observers.delete(this.observer);
        }
      },
    });
  }

  get title() {
    return this.#title.trim();
  }

  set title(title) {
    if (++this.writes > 10_000) throw new Error('the page never comes to rest');
    if (!this.hasTitles) return;
    this.#title = title;
    for (const observer of this.observers) {
      observer.told = true;
      queueMicrotask(() => {
        if (!observer.told || !this.observers.has(observer)) return;
        observer.told = false;
        observer.call();
      });
    }
  }

  addEventListener(name, listener) {
    this.listeners[name] = listener;
  }

  mark() {
    script.runInContext(this.world);
  }

  unmark() {
    this.tell({ type: 'unmark' });
  }

  async write(title) {
    this.title = title;
    await settle();
  }

  show(state) {
    this.visibilityState = state;
    this.listeners.visibilitychange();
  }
}

let clock;
const open = (title) => new Page(title, clock);
const openMarked = (title) => {
  const page = open(title);
  page.mark();
  return page;
};

beforeEach(() => (clock = new VirtualClock()));

test('puts the note before the title', () => assert.equal(openMarked('News').title, '♪ News'));

test('takes it away again', () => {
  const page = openMarked('News');
  page.unmark();
  assert.equal(page.title, 'News');
});

test('can be put again after it was taken', () => {
  const page = openMarked('News');
  page.unmark();
  page.mark();
  assert.equal(page.title, '♪ News');
});

test('marks once even if it is injected twice', () => {
  const page = openMarked('News');
  page.mark();
  assert.equal(page.title, '♪ News');
  page.unmark();
  assert.equal(page.title, 'News');
});

test('an unmarked page is left alone by "unmark"', async () => {
  const page = openMarked('News');
  page.unmark();
  await page.write('♪ my own');
  page.unmark();
  assert.equal(page.title, '♪ my own');
});

test('other messages do nothing', () => {
  const page = openMarked('News');
  page.tell({ type: 'status' });
  page.tell(null);
  assert.equal(page.title, '♪ News');
});

test('a new title of the page gets the note at once', async () => {
  const page = openMarked('News');
  await clock.advance(1000);
  await page.write('Sports');
  assert.equal(page.title, '♪ Sports');
});

test('a new title of the page stays when the note is taken away', async () => {
  const page = openMarked('News');
  await clock.advance(1000);
  await page.write('Sports');
  page.unmark();
  assert.equal(page.title, 'Sports');
});

test('a title written in the same moment as the note goes is not lost', () => {
  const page = openMarked('News');
  page.title = 'Sports';
  page.unmark();
  assert.equal(page.title, 'Sports');
});

test('keeps its place in a page that writes its title every 100 ms', async () => {
  const page = openMarked('0');
  for (let i = 1; i <= 600; i++) {
    await clock.advance(100);
    await page.write(`${i}`);
    assert.equal(page.title, `♪ ${i}`);
  }
  page.unmark();
  assert.equal(page.title, '600');
});

test('the mark is withdrawn from a page that writes its title every 10 ms', async () => {
  const page = openMarked('0');
  for (let i = 1; i <= 100; i++) {
    await clock.advance(10);
    await page.write(`${i}`);
  }
  assert.equal(page.title, '100');
  assert.equal(page.observers.size, 0);
  await page.write('101');
  assert.equal(page.title, '101');
});

test('a page that sets its own title again and again causes no endless loop', async () => {
  const page = openMarked('Mine');
  page.observers.add({ call: () => page.title === 'Mine' || (page.title = 'Mine'), told: false });
  await clock.advance(1000);
  await page.write('Mine');
  assert.equal(page.title, 'Mine');
  assert.ok(page.writes < 60, `${page.writes} writes`);
  await clock.advance(60_000);
  assert.ok(page.writes < 60, `${page.writes} writes`);
});

test('a page that had its way can be marked again', async () => {
  const page = openMarked('0');
  for (let i = 1; i <= 30; i++) await page.write(`${i}`);
  assert.equal(page.title, '30');
  await clock.advance(1000);
  page.mark();
  assert.equal(page.title, '♪ 30');
  page.unmark();
  assert.equal(page.title, '30');
});

test('a page that had its way a moment ago is not marked again', async () => {
  const page = openMarked('0');
  for (let i = 1; i <= 30; i++) await page.write(`${i}`);
  page.mark();
  assert.equal(page.title, '30');
  assert.equal(page.observers.size, 0);
});

test('leaves no timer behind', async () => {
  const page = openMarked('News');
  await page.write('Sports');
  page.unmark();
  assert.equal(page.title, 'Sports');
  assert.equal(clock.waiting, 0);
});

test('a title that the page built from the marked one has one note', async () => {
  const page = openMarked('News');
  await clock.advance(1000);
  await page.write(`(1) ${page.title}`);
  assert.equal(page.title, '♪ (1) News');
  page.unmark();
  assert.equal(page.title, '(1) News');
});

test('a scrolling title does not collect notes', async () => {
  const page = openMarked('Breaking news');
  for (let i = 0; i < 200; i++) {
    await page.write(page.title.slice(1) + page.title[0]);
    await clock.advance(300);
  }
  page.unmark();
  assert.doesNotMatch(page.title, /♪/);
  assert.ok(page.title.length <= 'Breaking news'.length);
});

test('a page with a note of its own shows one and keeps it', async () => {
  const page = openMarked('♪ Radio');
  assert.equal(page.title, '♪ Radio');
  page.unmark();
  assert.equal(page.title, '♪ Radio');
});

test('a page with a note of its own keeps it in another title too', async () => {
  const page = openMarked('♪ Radio');
  await clock.advance(1000);
  await page.write('♪ Another song');
  assert.equal(page.title, '♪ Another song');
  page.unmark();
  assert.equal(page.title, '♪ Another song');
});

test('an empty title becomes the note alone, without an endless loop', async () => {
  const page = openMarked('');
  assert.equal(page.title, '♪');
  await clock.advance(10_000);
  assert.equal(page.writes, 1);
  page.unmark();
  assert.equal(page.title, '');
});

test('a document without a title is left alone', async () => {
  const page = open('');
  page.hasTitles = false;
  page.head = null;
  page.documentElement = {};
  page.mark();
  await clock.advance(10_000);
  assert.equal(page.writes, 1);
  assert.equal(page.observers.size, 0);
});

test('becoming visible takes the note away', () => {
  const page = openMarked('News');
  page.show('visible');
  assert.equal(page.title, 'News');
});

test('becoming hidden leaves the note', () => {
  const page = openMarked('News');
  page.show('hidden');
  assert.equal(page.title, '♪ News');
});

test('when the extension is gone, the next title of the page is left as it is', async () => {
  const page = openMarked('News');
  page.runtime.id = undefined;
  await page.write('Sports');
  assert.equal(page.title, 'Sports');
  assert.equal(page.observers.size, 0);
});
