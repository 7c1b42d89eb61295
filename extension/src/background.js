// The browser starts this script: as a service worker in the Chromium family, as an event page in Firefox.

import { Companion } from './companion.js';

new Companion(globalThis.browser ?? globalThis.chrome, {
  setTimeout: (call, delay) => setTimeout(call, delay),
  clearTimeout: (timer) => clearTimeout(timer),
  now: () => Date.now(),
}).start();
