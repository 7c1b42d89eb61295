// Whether the user's desktop is dark or light, as the desktop portal tells, now and whenever it changes.
// Main thread only. Asks once, follows a signal, and never starts a portal that does not run: a status item is no
// reason to.
// Source: https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Settings.html
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QObject>
#include <functional>

#include "platform/linux/status/symbols.h"

namespace tollvane {

class BarToneWatcher : public QObject {
  Q_OBJECT

 public:
  // `onChange` is called with every tone that differs from the last; the first is dark, as most bars are.
  BarToneWatcher(QDBusConnection bus, std::function<void(BarTone)> onChange);

  BarTone tone() const { return tone_; }

 private Q_SLOTS:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void ask();
  void setColorScheme(const QVariant& value);

  QDBusConnection bus_;
  QDBusServiceWatcher portal_;
  std::function<void(BarTone)> onChange_;
  BarTone tone_ = BarTone::dark;
};

}  // namespace tollvane
