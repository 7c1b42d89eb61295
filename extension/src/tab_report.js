// What Tollvane is told about a tab: its title and host, on one line of plain text, and never its address.

const LONGEST_TITLE = 1000;

export function describe(tab) {
  return { title: titleOf(tab), host: hostOf(tab.url) };
}

// Whether a tab that has begun to load shows another page, and not another state of the same one: the page has no title
// yet.
export function isNewPage(tab) {
  return titleOf(tab) === '';
}

// Always without a note in front: it may be our mark, even one that an earlier background made. Browsers give the
// address of a page that has no title in its place.
function titleOf(tab) {
  const title = onOneLine(tab.title ?? '').replace(/^♪(?: |$)/u, '').trim().slice(0, LONGEST_TITLE);
  if (isAddress(title, tab)) return '';
  return title.replace(/\p{Surrogate}/gu, '\u{fffd}');  // half a character is no text to strict readers
}

function onOneLine(text) {
  return text.replace(/\p{Bidi_Control}/gu, '').replace(/[\p{Control}\u2028\u2029]/gu, ' ').trim();
}

// Browsers leave out what they like: the scheme, "www.", a user's name. They also write special letters out.
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

// The browser's own pages and extensions have something that looks like a host; it would tell nobody anything.
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
