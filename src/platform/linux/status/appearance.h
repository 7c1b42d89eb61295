// Dresses all windows and menus of the program light or dark, as the user wants the desktop to be, also when that
// changes while the program runs. A desktop that dresses programs by itself is left to it. Main thread only; needs a
// QApplication, which outlives it.
#pragma once

#include <QPalette>

#include "platform/linux/status/color_scheme_watcher.h"

namespace tollvane {

class Appearance {
 public:
  explicit Appearance(QDBusConnection bus);

 private:
  void dress(ColorScheme scheme);

  QPalette desktops_;  // as the toolkit found it
  ColorSchemeWatcher watcher_;
};

// The desktop's palette where it is dark or light as wished; else one that is, with the desktop's accent.
QPalette paletteFor(ColorScheme scheme, const QPalette& desktops);

}  // namespace tollvane
