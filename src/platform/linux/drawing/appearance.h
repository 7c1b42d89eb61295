// How the user wants programs to look: light or dark, in which accent colour, in which font. Main thread only.
#pragma once

#include <QColor>
#include <QDBusConnection>
#include <QFont>
#include <QPalette>
#include <QSocketNotifier>
#include <QVariant>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/drawing/portal_setting.h"
#include "platform/linux/x11/xsettings.h"

namespace tollvane {

enum class ColorScheme { noPreference, dark, light };

// What the desktop portal says about it.
class ColorSchemeWatcher {
 public:
  // `onChange` is called with every preference that differs from the last one; at first there is no preference.
  ColorSchemeWatcher(const QDBusConnection& bus, std::function<void(ColorScheme)> onChange);

  ColorScheme scheme() const { return scheme_; }

 private:
  void setColorScheme(ColorScheme scheme);

  std::function<void(ColorScheme)> onChange_;
  ColorScheme scheme_ = ColorScheme::noPreference;
  PortalSetting setting_;
};

// Dresses all windows and menus of the program, also if the user's wishes change while the program runs. Asks the
// portal and, on X11, the desktop's shared settings: without a plug-in for the desktop, the toolkit reads neither. Does
// nothing that a desktop does by itself. Needs a QApplication, which must outlive it.
class Appearance {
 public:
  explicit Appearance(const QDBusConnection& bus);

 private:
  void dress();
  void setAccent(const QVariant& value);
  void dressWithPortalsFont();
  void setFont(std::string_view description, double scale = 1);
  void followX11();
  void readX11();

  QPalette desktops_;  // the palette that the toolkit found
  ColorScheme themes_ = ColorScheme::noPreference;
  std::optional<QColor> accent_;
  std::string fontOfPortal_;
  double textScale_ = 1;
  std::unique_ptr<XSettingsWatch> x11_;
  bool hasX11Settings_ = false;
  std::unique_ptr<QSocketNotifier> x11Changes_;
  ColorSchemeWatcher watcher_;
  PortalSetting accentSetting_;
  PortalSetting fontSetting_;
  PortalSetting scaleSetting_;
};

// The portal's colour, red, green and blue from 0 to 1; absent if the user has chosen none, or if it is no such colour.
std::optional<QColor> accentOf(const QVariant& value);

// Whether a theme of this name is dark, as far as names tell: "Adwaita-dark", "Mint-Y-Dark-Aqua".
ColorScheme schemeOfTheme(std::string_view name);

// `palette` with this colour for what is chosen, and a text on it that can be read.
QPalette withAccent(QPalette palette, const QColor& accent);

// The desktop's palette if it is as dark or light as `scheme` says; else one that is, with the desktop's accent colour.
QPalette paletteFor(ColorScheme scheme, const QPalette& desktops);

}  // namespace tollvane
