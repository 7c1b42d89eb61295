// One of the settings that the desktop portal shares with programs. Main thread only.
// Source: https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Settings.html
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>
#include <functional>

namespace tollvane {

// Asks the portal once, and again when it comes later, and follows its signal. Never starts a portal: a status item is
// no reason for that.
class PortalSetting : public QObject {
  Q_OBJECT

 public:
  // `onValue` is called with each value; it may be of any type.
  PortalSetting(QDBusConnection bus, QString group, QString key, std::function<void(const QVariant&)> onValue);

 private Q_SLOTS:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void ask();
  void tell(const QVariant& value);

  QDBusConnection bus_;
  QDBusServiceWatcher portal_;
  QString group_, key_;
  std::function<void(const QVariant&)> onValue_;
};

}  // namespace tollvane
