// Keeps one status item registered with the desktop's StatusNotifierWatcher: as soon as there is one, again when
// another takes its place, and once each. Waits for names and signals only, never for time. Main thread only.
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

namespace tollvane {

class WatcherRegistration : public QObject {
  Q_OBJECT

 public:
  // `itemService` is the bus name that the item is found at. The item has to be on the bus already: a host may ask
  // for its properties before this returns to the event loop.
  WatcherRegistration(QDBusConnection bus, QString itemService);

 private Q_SLOTS:
  // A host that comes to a running watcher asks it for the items; a watcher that lost ours has to be told again.
  void hostRegistered();

 private:
  void findWatcher();
  void watcherChanged(const QString& owner);
  void registerItem();
  bool isOurs(const QString& item) const;

  QDBusConnection bus_;
  QDBusServiceWatcher watcher_;
  QString itemService_;
  QString registeredWith_;  // unique name of the watcher that knows the item; empty while there is none
};

}  // namespace tollvane
