// The options page. Its switch shows whether the browser grants access to pages; nothing else is stored.

import { SITES } from './marks.js';
import { describe } from './options_text.js';

const api = globalThis.browser ?? globalThis.chrome;
const find = (id) => document.getElementById(id);

async function show() {
  const allowed = await api.permissions.contains(SITES);
  const status = await api.runtime.sendMessage({ type: 'status' }).catch(() => undefined);
  const view = describe({ link: status?.link, markTabs: status?.markTabs, allowed });
  find('link').dataset.state = view.state;
  find('status').textContent = view.status;
  find('marks').checked = view.switchedOn;
  find('hint').textContent = view.hint;
}

// The request comes before any await, because browsers accept it only directly after the user's click.
find('marks').addEventListener('change', async ({ target }) => {
  const change = target.checked ? api.permissions.request(SITES) : api.permissions.remove(SITES);
  await change.catch(() => {});
  await show();
});

api.permissions.onAdded.addListener(show);
api.permissions.onRemoved.addListener(show);
api.storage.onChanged.addListener((changes, area) => {
  if (area === 'session') show();
});
find('version').textContent = api.runtime.getManifest().version;
show();
