// The report about a tab that is sent to Tollvane: its title and host, on one line of plain text, and never its address.

const LONGEST_TITLE = 1000;

export function describe(tab) {
  return { title: titleOf(tab), host: hostOf(tab.url) };
}

// Whether a tab that has begun to load shows another page, and not another state of the same one: a new page has no
// title yet.
export function isNewPage(tab) {
  return titleOf(tab) === '';
}

// The title without a note in front, which may be our mark, even one that an earlier background made. Browsers give a
// page without a title its address as its title.
function titleOf(tab) {
  const title = onOneLine(tab.title ?? '').replace(/^♪(?: |$)/u, '').trim().slice(0, LONGEST_TITLE);
  if (isAddress(title, tab)) return '';
  return title.replace(/\p{Surrogate}/gu, '\u{fffd}');  // strict parsers refuse half a character
}

function onOneLine(text) {
  return text.replace(/\p{Bidi_Control}/gu, '').replace(/[\p{Control}\u2028\u2029]/gu, ' ').trim();
}

// Browsers may leave out the scheme, "www." and the user's name, and may decode special letters.
function isAddress(title, { url, pendingUrl }) {
  if (/^[a-z][a-z0-9+.-]*:\/\//iu.test(title)) return true;
  return [url, pendingUrl].map(parsed).some((page) => {
    if (!page) return false;
    if (title.toLowerCase().startsWith(page.protocol)) return true;
    const read = parsed(`http://${title}`);
    return page.host !== '' && read !== null && withoutWww(read.host) === withoutWww(page.host);
  });
}

const withoutWww = (host) => host.replace(/^www\./u, '');

// Only for pages of the web: the host of a browser's own page or of an extension means nothing to the user.
function hostOf(address) {
  const url = parsed(address);
  return url && /^https?:$/u.test(url.protocol) ? url.hostname : '';
}

function parsed(address) {
  try {
    return new URL(address);
  } catch {
    return null;
  }
}
