// The report about a tab that is sent to Tollvane.

const LONGEST_TITLE = 1000;

export function describe(tab) {
  return { title: titleOf(tab), host: hostOf(tab.url) };
}

// The title without a note in front, which may be our mark, even one that an earlier background made.
function titleOf(tab) {
  const title = (tab.title ?? '').replace(/^♪(?: |$)/u, '').slice(0, LONGEST_TITLE);
  return title.replace(/\p{Surrogate}/gu, '\u{fffd}');  // strict parsers refuse half a character
}

// Only for pages of the web: the host of a browser's own page or of an extension means nothing to the user.
function hostOf(address) {
  try {
    const url = new URL(address);
    return /^https?:$/.test(url.protocol) ? url.hostname : '';
  } catch {
    return '';
  }
}
