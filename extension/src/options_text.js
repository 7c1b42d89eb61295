// What the options page says, as plain values.
//
// `linked`: the bridge is there; undefined while nobody has answered. `markTabs`: Tollvane's own setting; undefined
// until Tollvane has told it. `allowed`: the user has given access to the pages.

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
