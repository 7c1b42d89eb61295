// The ids under which Tollvane knows tabs. Browsers number the tabs of each profile, and of each run, from the
// beginning again, so that a number alone may mean several tabs. We put a random number before it, another one in each
// life of the background: the ids of all profiles and runs differ.

const TAB_BITS = 31;  // browsers' own numbers have no more
const RUN_BITS = 53 - TAB_BITS;  // both together are exact as a JavaScript number

// Between 1 and 2 ** RUN_BITS - 1: no id is one that a browser itself would give.
export function randomRun(random = crypto) {
  const [number] = random.getRandomValues(new Uint32Array(1));
  return 1 + (number % (2 ** RUN_BITS - 1));
}

export function reportedId(run, tabId) {
  return run * 2 ** TAB_BITS + (tabId % 2 ** TAB_BITS);
}
