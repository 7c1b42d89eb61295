// A menu as the extension of GNOME Shell reads it: a text in JSON. Main thread only.
//
//   [{"id": 1, "name": "3:07:42 PM  Firefox", "enabled": true, "toolTip": "...", "key": ",",
//     "lines": [[RUN, ...], ...], "items": [...]},
//    {"id": 2, "separator": true}, ...]
//   RUN: {"text": "Firefox", "style": "bold|time|small|indent|", "color": "label|secondary|faint|accent"}
//
// "toolTip", "key" and "items", the submenu, are there only if the item has them. Texts are plain. shell/gnome/body.js
// is the reader.
#pragma once

#include <QJsonArray>
#include <QString>
#include <map>
#include <vector>

#include "platform/linux/bell/exported_menu.h"
#include "platform/menu.h"

namespace tollvane {

class ShellMenu {
 public:
  ShellMenu() = default;  // a menu without items
  ShellMenu(const Menu& menu, MenuNumbers& numbers);

  QString text() const;

  // The menu item with this number, with its submenu; null if the menu has no such item.
  const MenuItem* item(int number) const;

 private:
  QJsonArray listOf(const std::vector<MenuItem>& items, MenuNumbers& numbers);

  QJsonArray list_;
  std::map<int, MenuItem> items_;
};

}  // namespace tollvane
