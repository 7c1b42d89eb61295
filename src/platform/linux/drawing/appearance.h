// Whether the user wants the desktop to be light or dark. Main thread only.
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

// Asks the desktop portal once and follows its signal. Never starts a portal: a status item is no reason for that.
class ColorSchemeWatcher : public QObject {
  Q_OBJECT

 public:
  // `onChange` is called with every preference that differs from the last one; at first there is no preference.
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

// Makes all windows and menus of the program light or dark, also if the user's preference changes while the program
// runs. Does nothing on a desktop that does this by itself. Needs a QApplication, which must outlive it.
class Appearance {
 public:
  explicit Appearance(QDBusConnection bus);

 private:
  void dress(ColorScheme scheme);

  QPalette desktops_;  // the palette that the toolkit found
  ColorSchemeWatcher watcher_;
};

// The desktop's palette if it is as dark or light as `scheme` says; else one that is, with the desktop's accent colour.
QPalette paletteFor(ColorScheme scheme, const QPalette& desktops);

}  // namespace tollvane
