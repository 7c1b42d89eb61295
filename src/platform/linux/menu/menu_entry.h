// One item of the menu as the toolkit knows it: an action whose text is what screen readers say, with the title that is
// drawn instead. Refers to the item, which outlives it. Main thread only.
#pragma once

#include <QAction>
#include <QFont>
#include <QKeySequence>

#include "platform/linux/menu/menu_title.h"
#include "platform/menu.h"

namespace tollvane {

class MenuEntry : public QAction {
 public:
  MenuEntry(const MenuItem& item, const QFont& menuFont, QObject* parent);

  const MenuItem& item() const { return item_; }
  MenuTitle& title() { return title_; }
  const MenuTitle& title() const { return title_; }

  // With the modifier for commands; empty without a key equivalent.
  const QKeySequence& keys() const { return keys_; }

  // What typing looks for: the application's name, or the command's own.
  const QString& typed() const { return typed_; }

 private:
  const MenuItem& item_;
  MenuTitle title_;
  QKeySequence keys_;
  QString typed_;
};

// The item's words in one line, blanks that only place them left out.
QString spokenTitle(const MenuItem& item);

}  // namespace tollvane
