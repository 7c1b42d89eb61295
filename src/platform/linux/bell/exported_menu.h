// A menu as bars see it over the bus: the same items, identified by numbers. Main thread only.
//
//   MenuNumbers numbers;
//   ExportedMenu first(menu, numbers);
//   ExportedMenu second(laterMenu, numbers);   // an item of the first has the same number in the second
#pragma once

#include <QHash>
#include <QString>
#include <map>
#include <string>
#include <utility>

#include "platform/linux/bell/bus_types.h"
#include "platform/menu.h"

namespace tollvane {

// Gives each identifier a number that no other identifier ever gets. Remembers only the identifiers of the last menu:
// one that comes back after a menu without it gets a new number.
class MenuNumbers {
 public:
  void beginMenu();
  int numberOf(const std::string& identifier);
  void endMenu();

 private:
  using Key = std::pair<std::string, int>;  // identifier, and how many items before it have the same one
  std::map<Key, int> known_;
  std::map<Key, int> inThisMenu_;
  std::map<std::string, int> occurrences_;
  int last_ = 0;
};

class ExportedMenu {
 public:
  // A menu without items.
  ExportedMenu();
  ExportedMenu(const Menu& menu, MenuNumbers& numbers);

  bool hasSameLayout(const ExportedMenu& other) const { return layout_ == other.layout_; }

  // How the items that are in both menus differ from those of `before`.
  struct Changes {
    DBusMenuPropertiesList updated;     // the properties that are new, or have another value
    DBusMenuPropertyNamesList removed;  // the properties that have their defaults again
  };
  Changes changesSince(const ExportedMenu& before) const;

  // The item with this number; null if none exists. 0 is the whole menu.
  const DBusMenuLayout* find(int number) const;

  // The menu item from which it was made, without its submenu; null if none exists. The whole menu, 0, has none.
  const MenuItem* item(int number) const;

 private:
  DBusMenuLayout exported(const MenuItem& item, MenuNumbers& numbers);

  DBusMenuLayout layout_;
  QHash<int, MenuItem> items_;
};

// A menu item's title in one line of plain text: "3:07:42 PM  Firefox · notification sound — Tab: Inbox". Two blanks
// follow the time, a dot stands between other parts, a dash before what was the second line.
QString plainLabel(const MenuItem& item);

// The same for bars that draw the menu themselves. Underscores are doubled, because a single one would underline the
// next character.
QString menuLabel(const MenuItem& item);

// `layout` with at most `depth` levels below it (0: none, negative: all) and only with the properties in `names`
// (empty: with all).
DBusMenuLayout excerpt(const DBusMenuLayout& layout, int depth, const QStringList& names);
QVariantMap excerpt(const QVariantMap& properties, const QStringList& names);

// The protocol's default for a property that an item leaves out; invalid for an unknown property.
QVariant defaultMenuProperty(const QString& name);

}  // namespace tollvane
