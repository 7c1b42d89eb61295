// The colours of a menu, one for each role of its texts, from the palette of the user's desktop: readable in front of
// the menu's background whatever the palette holds. Pure; callable from any thread.
#pragma once

#include <QColor>
#include <QPalette>

#include "platform/menu.h"

namespace tollvane {

class MenuColors {
 public:
  explicit MenuColors(const QPalette& palette);

  QColor of(TextColor role) const;
  QColor selected() const { return selected_; }  // all texts of the entry under the pointer
  QColor disabled() const { return tertiary_; }

 private:
  QColor label_;
  QColor secondary_;
  QColor tertiary_;
  QColor accent_;
  QColor selected_;
};

}  // namespace tollvane
