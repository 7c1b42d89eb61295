#include "platform/linux/bell/exported_menu.h"

#include "platform/linux/drawing/plain_text.h"

namespace tollvane {
namespace {

// Bars look up keys by their X11 names.
QString keyName(const std::string& keyEquivalent) {
  return keyEquivalent == "," ? QStringLiteral("comma") : QString::fromStdString(keyEquivalent);
}

const QString afterTime = QStringLiteral("  ");
const QString dot = QStringLiteral(" \u00b7 ");
const QString dash = QStringLiteral(" \u2014 ");

// The fonts of the runs tell where a new part begins. Their blanks do not: those are only for drawn titles.
QString labelOf(const AttributedText& title) {
  QString label;
  QString between;
  for (const TextRun& run : title) {
    if (beginsLine(run) && !label.isEmpty()) between = dash;
    const QString text = plainLine(run.text).trimmed();
    if (text.isEmpty()) continue;
    label += between + text;
    between = run.font.family == FontFamily::monospacedDigits ? afterTime : dot;
  }
  return label;
}

QVariantMap propertiesOf(const MenuItem& item) {
  if (item.isSeparator) return {{QStringLiteral("type"), QStringLiteral("separator")}};
  QVariantMap properties{{QStringLiteral("label"), menuLabel(item)}};
  if (!item.isEnabled) properties.insert(QStringLiteral("enabled"), false);
  if (!item.submenu.empty()) properties.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
  if (!item.keyEquivalent.empty()) {
    const DBusMenuShortcut shortcut{{QStringLiteral("Control"), keyName(item.keyEquivalent)}};
    properties.insert(QStringLiteral("shortcut"), QVariant::fromValue(shortcut));
  }
  return properties;
}

const DBusMenuLayout* findBelow(const DBusMenuLayout& layout, int number) {
  if (layout.id == number) return &layout;
  for (const DBusMenuLayout& child : layout.children) {
    if (const DBusMenuLayout* found = findBelow(child, number)) return found;
  }
  return nullptr;
}

}  // namespace

QString plainLabel(const MenuItem& item) {
  return item.attributedTitle.empty() ? plainLine(item.title) : labelOf(item.attributedTitle);
}

QString menuLabel(const MenuItem& item) { return plainLabel(item).replace(u'_', QStringLiteral("__")); }

void MenuNumbers::beginMenu() {
  inThisMenu_.clear();
  occurrences_.clear();
}

int MenuNumbers::numberOf(const std::string& identifier) {
  const Key key(identifier, occurrences_[identifier]++);
  const auto known = known_.find(key);
  return inThisMenu_[key] = known == known_.end() ? ++last_ : known->second;
}

void MenuNumbers::endMenu() { known_.swap(inThisMenu_); }

ExportedMenu::ExportedMenu() {
  layout_.properties.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
}

ExportedMenu::ExportedMenu(const Menu& menu, MenuNumbers& numbers) : ExportedMenu() {
  numbers.beginMenu();
  for (const MenuItem& item : menu.items) layout_.children.append(exported(item, numbers));
  numbers.endMenu();
}

DBusMenuLayout ExportedMenu::exported(const MenuItem& item, MenuNumbers& numbers) {
  DBusMenuLayout layout{numbers.numberOf(item.identifier), propertiesOf(item), {}};
  for (const MenuItem& below : item.submenu) layout.children.append(exported(below, numbers));
  MenuItem kept = item;
  kept.submenu.clear();
  items_.insert(layout.id, kept);
  return layout;
}

ExportedMenu::Changes ExportedMenu::changesSince(const ExportedMenu& before) const {
  Changes changes;
  for (auto item = items_.constBegin(); item != items_.constEnd(); ++item) {
    const DBusMenuLayout* old = before.find(item.key());
    if (old == nullptr) continue;
    const QVariantMap& now = find(item.key())->properties;
    QVariantMap updated;
    for (auto property = now.constBegin(); property != now.constEnd(); ++property)
      if (old->properties.value(property.key()) != *property) updated.insert(property.key(), *property);
    QStringList removed;
    for (const QString& name : old->properties.keys())
      if (!now.contains(name)) removed.append(name);
    if (!updated.isEmpty()) changes.updated.append({item.key(), updated});
    if (!removed.isEmpty()) changes.removed.append({item.key(), removed});
  }
  return changes;
}

const DBusMenuLayout* ExportedMenu::find(int number) const { return findBelow(layout_, number); }

const MenuItem* ExportedMenu::item(int number) const {
  const auto found = items_.constFind(number);
  return found == items_.constEnd() ? nullptr : &*found;
}

DBusMenuLayout excerpt(const DBusMenuLayout& layout, int depth, const QStringList& names) {
  DBusMenuLayout result{layout.id, excerpt(layout.properties, names), {}};
  if (depth == 0) return result;
  for (const DBusMenuLayout& child : layout.children) result.children.append(excerpt(child, depth - 1, names));
  return result;
}

QVariantMap excerpt(const QVariantMap& properties, const QStringList& names) {
  if (names.isEmpty()) return properties;
  QVariantMap result;
  for (const QString& name : names) {
    if (const auto found = properties.constFind(name); found != properties.constEnd()) result.insert(name, *found);
  }
  return result;
}

QVariant defaultMenuProperty(const QString& name) {
  static const QVariantMap defaults{
      {QStringLiteral("type"), QStringLiteral("standard")},
      {QStringLiteral("label"), QString()},
      {QStringLiteral("enabled"), true},
      {QStringLiteral("visible"), true},
      {QStringLiteral("icon-name"), QString()},
      {QStringLiteral("icon-data"), QByteArray()},
      {QStringLiteral("shortcut"), QVariant::fromValue(DBusMenuShortcut())},
      {QStringLiteral("toggle-type"), QString()},
      {QStringLiteral("toggle-state"), -1},
      {QStringLiteral("children-display"), QString()},
      {QStringLiteral("disposition"), QStringLiteral("normal")},
      {QStringLiteral("accessible-desc"), QString()},
  };
  return defaults.value(name);
}

}  // namespace tollvane
