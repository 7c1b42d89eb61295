// Puts the parts of the extension together: listens to the browser and to Tollvane, and lets the parts do the work.
//
// start() must run to its end before the background script returns to the browser. Otherwise the browser does not know
// that these events must wake the script. It also connects, so every event that wakes a stopped background restores the
// link. The parts themselves wait for memory.ready if they need what an earlier background knew.

import { KnownTabs } from './known_tabs.js';
import { Link } from './link.js';
import { Marks } from './marks.js';
import { reportedId } from './reported_id.js';
import { RunMemory } from './run_memory.js';
import { SILENCE_IS_TOLD, SoundingTabs } from './sounding_tabs.js';
import { describe, isNewPage } from './tab_report.js';

export class Companion {
  #api;
  #clock;
  #run;
  #memory;
  #link;
  #known;
  #marks;
  #sounding;

  // `run`: a number that no other profile and no other life of the background has; see reported_id.js.
  constructor(api, clock, run) {
    this.#api = api;
    this.#clock = clock;
    this.#run = run;
    this.#sounding = new SoundingTabs(clock);
    this.#memory = new RunMemory(api.storage, clock);
    this.#link = new Link(api, clock, this.#memory, (message) => this.#received(message));
    this.#known = new KnownTabs(this.#memory, api.storage.local);
    this.#marks = new Marks(api, this.#memory);
  }

  start() {
    this.#listenToTabs();
    this.#listenToPeople();
    this.#listenToLife();
    this.#link.connect();
    this.#memory.ready.then(() => this.#memory.carried && this.#marks.apply());
  }

  #listenToTabs() {
    const { tabs, windows } = this.#api;
    tabs.onUpdated.addListener((id, change, tab) => this.#tabChanged(change, tab));
    tabs.onRemoved.addListener(async (id) => {
      await this.#known.ready;
      this.#sounding.forget(id);
      this.#known.forget(id);
      this.#marks.forget(id);
    });
    tabs.onReplaced?.addListener(async (added, removed) => {
      await this.#known.ready;
      this.#sounding.forget(removed);
      this.#known.replace(removed, added);
      this.#marks.replace(removed, added);
    });
    tabs.onActivated.addListener(({ tabId }) => this.#marks.visited(tabId));
    windows.onFocusChanged.addListener(async (windowId) => {
      if (windowId === windows.WINDOW_ID_NONE) return;
      for (const tab of await tabs.query({ active: true, windowId })) this.#marks.visited(tab.id);
    });
  }

  #listenToPeople() {
    const { action, permissions, runtime } = this.#api;
    action.onClicked.addListener(() => runtime.openOptionsPage());
    permissions.onAdded.addListener(() => this.#marks.apply());
    permissions.onRemoved.addListener(() => this.#marks.apply());
    // Answers through the callback, because not every browser waits for a promise here.
    runtime.onMessage.addListener((message, sender, answer) => {
      if (message?.type !== 'status') return false;
      this.#memory.ready.then(() => answer({ link: this.#link.state, markTabs: this.#marks.wanted }));
      return true;
    });
  }

  #listenToLife() {
    const { alarms, runtime } = this.#api;
    runtime.onStartup.addListener(() => {
      this.#known.browserStarted();
      return this.#hearRestoredTabs();
    });
    // This one has nothing to do: the browser starts the background because it listens to it.
    runtime.onInstalled.addListener(() => {});
    alarms.onAlarm.addListener((alarm) => this.#link.onAlarm(alarm));
    // The open link never lets this background become idle, so an update would wait until the browser ends.
    runtime.onUpdateAvailable.addListener(async () => {
      await this.#memory.ready;
      await this.#marks.withdraw();
      await this.#memory.carryOver();
      runtime.reload();
    });
  }

  #tabChanged(change, tab) {
    if (tab.incognito) return;
    if (this.#sounding.starts(change, tab)) this.#sounded(tab);
    if (change.status === 'loading' && isNewPage(tab)) this.#pageLeft(tab.id);
    if (change.status === 'complete') this.#marks.loaded(tab.id);
  }

  // A new page that plays at once is reported when it is certain that it is not the old one that was heard.
  #pageLeft(id) {
    const heard = this.#sounding.pageLeft(id);
    if (!heard) return;
    this.#clock.setTimeout(async () => {
      const tab = await this.#api.tabs.get(id).catch(() => undefined);
      if (tab && this.#sounding.isUnchanged(id, heard)) this.#sounded(tab);
    }, SILENCE_IS_TOLD);
  }

  // A browser that opens the pages of its last run may hear them before it starts this background.
  async #hearRestoredTabs() {
    for (const tab of await this.#api.tabs.query({ audible: true })) {
      const isNew = !tab.incognito && !this.#sounding.knows(tab.id);
      if (isNew && this.#sounding.starts({ audible: true }, tab)) this.#sounded(tab, { restored: true });
    }
  }

  #sounded(tab, more) {
    this.#report(tab, more);
    this.#marks.sounded(tab);
  }

  // The report is sent at once. The memory is only needed for a later "focus".
  #report(tab, more = {}) {
    const tabId = reportedId(this.#run, tab.id);
    this.#link.send({ type: 'audible', tabId, ...describe(tab), ...more });
    this.#known.ready.then(() => this.#known.add(tabId, tab.id));
  }

  async #received(message) {
    switch (message?.type) {
      case 'link':
        return this.#known.browserIs(message.browser);
      case 'settings':
        return this.#settings(message);
      case 'whichAudible':
        return this.#tellWhichSounds();
      case 'focus':
        return this.#focus(message);
      default:
        return undefined;
    }
  }

  async #settings({ markTabs }) {
    if (typeof markTabs !== 'boolean') return;
    const turnedOn = await this.#marks.want(markTabs);
    // Only here the extension asks for access to the pages by itself.
    if (turnedOn && !(await this.#marks.allowed())) await this.#api.runtime.openOptionsPage();
  }

  // Of several audible tabs each may have made the sound that Tollvane asks about: then only their number is told.
  async #tellWhichSounds() {
    const audible = await this.#api.tabs.query({ audible: true });
    const heard = audible.filter((tab) => !tab.incognito && !tab.mutedInfo?.muted);
    if (heard.length === 1) this.#report(heard[0], { asked: true });
    else this.#link.send({ type: 'audibleCount', count: heard.length });
  }

  async #focus({ req, tabId }) {
    if (!Number.isSafeInteger(req)) return;
    await this.#known.ready;
    const id = this.#known.find(tabId);
    const ok = id !== undefined && (await this.#bringForward(id));
    this.#link.send({ type: 'focusResult', req, ok });
  }

  async #bringForward(id) {
    try {
      const tab = await this.#api.tabs.update(id, { active: true });
      await this.#api.windows.update(tab.windowId, { focused: true });
    } catch {
      return false;  // the tab is closed
    }
    this.#marks.visited(id);
    return true;
  }
}
