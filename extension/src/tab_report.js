// What Tollvane is told about a tab.

const LONGEST_TITLE = 1000;

export function describe(tab) {
  return { title: titleOf(tab), host: hostOf(tab.url) };
}

// Always without a note in front: it may be our mark, even one that an earlier background made.
function titleOf(tab) {
  const title = (tab.title ?? '').replace(/^♪(?: |$)/u, '').slice(0, LONGEST_TITLE);
  return title.replace(/\p{Surrogate}/gu, '\u{fffd}');  // half a character is no text to strict readers
}

// The browser's own pages and extensions have something that looks like a host; it would tell nobody anything.
function hostOf(address) {
  try {
    const url = new URL(address);
    return /^https?:$/.test(url.protocol) ? url.hostname : '';
  } catch {
    return '';
  }
}
