// Safari starts this script.

import { Companion } from './companion.js';
import { randomRun } from './reported_id.js';
import { safariApi } from './safari_api.js';

const clock = {
  setTimeout: (call, delay) => setTimeout(call, delay),
  clearTimeout: (timer) => clearTimeout(timer),
  now: () => Date.now(),
};

new Companion(safariApi(globalThis.browser), clock, randomRun()).start();
