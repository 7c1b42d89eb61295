// The texts and states of the options page, as plain values.
//
// `link`: the state that link.js gives; undefined until the background has answered. `markTabs`: Tollvane's setting;
// undefined until Tollvane has sent it. `allowed`: whether the user has given access to pages.

const STATUS = {
  unknown: 'Looking for Tollvane…',
  linked: 'Linked to Tollvane.',
  waiting: 'Tollvane is not running. The link comes up as soon as it is started.',
  missing: 'Tollvane was not found. Start it once on this computer; the link then comes up within a minute.',
};

export function describe({ link, markTabs, allowed }) {
  const state = Object.hasOwn(STATUS, link) ? link : 'unknown';
  return { state, status: STATUS[state], switchedOn: allowed, hint: hint(markTabs, allowed) };
}

function hint(markTabs, allowed) {
  if (markTabs === true && !allowed) return 'Tollvane would mark tabs now, and waits for this switch.';
  if (markTabs === true) return 'On. A note appears when a tab in the background makes a sound.';
  if (allowed) return 'Also turn on “Mark browser tabs that made a sound” in the settings of Tollvane.';
  return '';
}
