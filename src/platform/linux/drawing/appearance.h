// Light or dark, as the user wants the desktop to be. Main thread only.
// Source: https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Settings.html
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QObject>
#include <QPalette>
#include <functional>

namespace tollvane {

enum class ColorScheme { noPreference, dark, light };

// Asks the desktop portal once, and follows its signal. Never starts a portal that does not run: a status item is no
// reason to.
class ColorSchemeWatcher : public QObject {
  Q_OBJECT

 public:
  // `onChange` is called with every wish that differs from the one before; at first there is no preference.
  ColorSchemeWatcher(QDBusConnection bus, std::function<void(ColorScheme)> onChange);

  ColorScheme scheme() const { return scheme_; }

 private Q_SLOTS:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void ask();
  void setColorScheme(const QVariant& value);

  QDBusConnection bus_;
  QDBusServiceWatcher portal_;
  std::function<void(ColorScheme)> onChange_;
  ColorScheme scheme_ = ColorScheme::noPreference;
};

// Dresses all windows and menus of the program light or dark, also when the user's wish changes while the program runs.
// Does nothing on a desktop that dresses programs by itself. Needs a QApplication, which outlives it.
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
