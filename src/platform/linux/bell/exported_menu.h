// A menu as bars see it over the bus: the same items under numbers. Main thread only.
//
//   MenuNumbers numbers;
//   ExportedMenu first(menu, numbers);
//   ExportedMenu second(laterMenu, numbers);   // what was in the first has the same number in the second
#pragma once

#include <QHash>
#include <QString>
#include <map>
#include <string>
#include <utility>

#include "platform/linux/bell/bus_types.h"
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
  // Without items.
  ExportedMenu();
  ExportedMenu(const Menu& menu, MenuNumbers& numbers);

  bool hasSameLayout(const ExportedMenu& other) const { return layout_ == other.layout_; }

  // The item with this number; null if there is none. 0 is the whole menu.
  const DBusMenuLayout* find(int number) const;

  // The same as the item that it was made from; null for the whole menu, too.
  const MenuItem* item(int number) const;

 private:
  DBusMenuLayout exported(const MenuItem& item, MenuNumbers& numbers);

  DBusMenuLayout layout_;
  QHash<int, MenuItem> items_;
};

// A menu item's title for bars that draw the menu themselves and know only one line of plain text: "3:07:42 PM  Firefox
// · notification sound — Tab: Inbox". A dot tells what stands first apart from what follows, a dash a second line.
// Underscores are doubled: a single one would underline the next character.
QString menuLabel(const MenuItem& item);

// With only so many levels below it (none for 0, all for a negative number), and only these properties (all if there
// are no names).
DBusMenuLayout excerpt(const DBusMenuLayout& layout, int depth, const QStringList& names);
QVariantMap excerpt(const QVariantMap& properties, const QStringList& names);

// The protocol's default for a property that an item leaves out; invalid for an unknown property.
QVariant defaultMenuProperty(const QString& name);

}  // namespace tollvane
