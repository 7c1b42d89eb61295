// The browser starts this script: as a service worker in the Chromium family, as an event page in Firefox.

import { Companion } from './companion.js';
import { randomRun } from './reported_id.js';

const clock = {
  setTimeout: (call, delay) => setTimeout(call, delay),
  clearTimeout: (timer) => clearTimeout(timer),
  now: () => Date.now(),
};

new Companion(globalThis.browser ?? globalThis.chrome, clock, randomRun()).start();
