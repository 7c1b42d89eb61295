// Whether the user wants a dark or a light desktop, as the desktop portal tells, now and whenever it changes.
// Main thread only. Asks once, follows a signal, and never starts a portal that does not run: a status item is no
// reason to.
// Source: https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Settings.html
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QObject>
#include <functional>

namespace tollvane {

enum class ColorScheme { noPreference, dark, light };

class ColorSchemeWatcher : public QObject {
  Q_OBJECT

 public:
  // `onChange` is called with every wish that differs from the last; the first is none.
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

}  // namespace tollvane
