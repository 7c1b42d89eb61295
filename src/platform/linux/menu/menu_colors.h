// The colours of a menu, one for each role of its texts, from the palette of the user's desktop: readable in front of
// the menu's background whatever the palette holds. Pure; callable from any thread.
#pragma once

#include <QColor>
#include <QPalette>
#include <vector>

#include "platform/menu.h"

namespace tollvane {

// How much two colours differ in brightness, 1 to 21, as WCAG 2 measures it. Opaque colours.
double contrast(const QColor& one, const QColor& other);

// `share` of the one colour over the other.
QColor blend(const QColor& over, const QColor& under, double share);

// The colour itself where it differs from each background by that contrast; else as much of it as can be had.
QColor readable(const QColor& color, const std::vector<QColor>& backgrounds, double least);

class MenuColors {
 public:
  // What is read at the least. Faded entries have been seen, and disabled ones say nothing new.
  static constexpr double kReadable = 4.5;
  static constexpr double kFaded = 3.0;

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
