// The texts and states of the options page, as plain values.
//
// `linked`: whether the port to the bridge is open; undefined until the background has answered. `markTabs`: Tollvane's
// setting; undefined until Tollvane has sent it. `allowed`: whether the user has given access to pages.

export function describe({ linked, markTabs, allowed }) {
  return { ...link(linked), switchedOn: allowed, hint: hint(markTabs, allowed) };
}

function link(linked) {
  if (linked === undefined) return { state: 'unknown', status: 'Looking for Tollvane…' };
  if (linked) return { state: 'linked', status: 'Linked to Tollvane.' };
  return {
    state: 'missing',
    status: 'Tollvane was not found. Start it once on this computer; the link then comes up within a minute.',
  };
}

function hint(markTabs, allowed) {
  if (markTabs === true && !allowed) return 'Tollvane would mark tabs now, and waits for this switch.';
  if (markTabs === true) return 'On. A note appears when a tab in the background makes a sound.';
  if (allowed) return 'Also turn on “Mark browser tabs that made a sound” in the settings of Tollvane.';
  return '';
}
