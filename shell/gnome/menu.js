// The menu as Tollvane describes it, read and cut down to what a menu may have. Pure functions.

const LONGEST_TEXT = 400;
const MOST_ITEMS = 80;
const MOST_RUNS = 8;
const LONGEST_MENU = 1 << 20;
const STYLES = ['bold', 'time', 'small', 'indent'];
const COLOURS = ['secondary', 'faint', 'accent'];

function shortened(text) {
  return typeof text !== 'string' ? '' : text.length <= LONGEST_TEXT ? text : `${text.slice(0, LONGEST_TEXT)}…`;
}

function objectsIn(list, most) {
  return Array.isArray(list) ? list.slice(0, most).filter(each => each !== null && typeof each === 'object') : [];
}

function runFrom(run) {
  return {text: shortened(run.text), classes: [STYLES.find(each => each === run.style),
    COLOURS.find(each => each === run.color)].filter(Boolean)};
}

function itemsFrom(list, isBelow) {
  return objectsIn(list, MOST_ITEMS).map(item => ({
    id: Number.isInteger(item.id) ? item.id : 0,
    isSeparator: item.separator === true,
    isEnabled: item.enabled !== false,
    name: shortened(item.name),
    toolTip: shortened(item.toolTip),
    key: typeof item.key === 'string' ? item.key.slice(0, 1) : '',
    lines: objectsIn(item.lines, 2).map(runs => objectsIn(runs, MOST_RUNS).map(runFrom)),
    items: isBelow ? [] : itemsFrom(item.items, true), // a submenu has no submenus
  }));
}

// The items in this JSON text. Empty if it is no menu.
function menuFrom(text) {
  if (typeof text !== 'string' || text.length > LONGEST_MENU)
    return [];
  try {
    return itemsFrom(JSON.parse(text), false);
  } catch {
    return [];
  }
}

