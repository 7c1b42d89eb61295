// A menu as bars see it over the bus: the same items under numbers. Main thread only.
//
//   MenuNumbers numbers;
//   ExportedMenu first(menu, numbers);
//   ExportedMenu second(laterMenu, numbers);   // what was in the first has the same number in the second
#pragma once

#include <QHash>
#include <map>
#include <string>
#include <utility>

#include "platform/linux/status/dbus_menu_types.h"
#include "platform/menu.h"

namespace tollvane {

// Gives each identifier a number that no other identifier ever gets. Remembers only what the last menu had, so one that
// comes back after a menu without it gets a new one.
class MenuNumbers {
 public:
  void beginMenu();
  int numberOf(const std::string& identifier);
  void endMenu();

 private:
  using Key = std::pair<std::string, int>;  // identifier, and which of those with the same one
  std::map<Key, int> known_;
  std::map<Key, int> inThisMenu_;
  std::map<std::string, int> occurrences_;
  int last_ = 0;
};

class ExportedMenu {
 public:
  // Of no items.
  ExportedMenu();
  ExportedMenu(const Menu& menu, MenuNumbers& numbers);

  bool hasSameLayout(const ExportedMenu& other) const { return layout_ == other.layout_; }

  // The item below this number; null for one that is not there. 0 is the whole menu.
  const DBusMenuLayout* find(int number) const;

  // Null for the whole menu, and for a number that is not there.
  const MenuItem* item(int number) const;

 private:
  DBusMenuLayout exported(const MenuItem& item, MenuNumbers& numbers);

  DBusMenuLayout layout_;
  QHash<int, MenuItem> items_;
};

// With only so many levels below it (none for 0, all for a negative number), and only these properties (all if there
// are no names).
DBusMenuLayout excerpt(const DBusMenuLayout& layout, int depth, const QStringList& names);
QVariantMap excerpt(const QVariantMap& properties, const QStringList& names);

// What a property is that an item does not have; invalid for one that the protocol does not know.
QVariant defaultMenuProperty(const QString& name);

}  // namespace tollvane
