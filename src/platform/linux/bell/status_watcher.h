// The desktop's StatusNotifierWatcher, which knows the items and the bars that show them. Waits for the bus's names and
// signals only, never for time. Main thread only.
// Source: the page StatusNotifierItem of the freedesktop.org wiki.
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <functional>

namespace tollvane {

// Keeps one status item registered: as soon as there is a watcher, again when another takes its place, once each.
class WatcherRegistration : public QObject {
  Q_OBJECT

 public:
  // `itemService` is the bus name that the item is found at. The item has to be on the bus already: a bar may ask for
  // its properties before this returns to the event loop.
  WatcherRegistration(QDBusConnection bus, QString itemService);

 private Q_SLOTS:
  // A bar that comes to a running watcher asks it for the items; a watcher that lost ours has to be told again.
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

// Whether anything on this desktop shows status items.
class StatusHostWatch : public QObject {
  Q_OBJECT

 public:
  // `onChange` is called, later, whenever the first bar has come or the last one has gone. At first there is none.
  StatusHostWatch(QDBusConnection bus, std::function<void(bool hasHost)> onChange);

  bool hasHost() const { return hasHost_; }

 private Q_SLOTS:
  void ask();

 private:
  void set(bool hasHost);

  QDBusConnection bus_;
  QDBusServiceWatcher watcher_;
  std::function<void(bool)> onChange_;
  bool hasHost_ = false;
};

}  // namespace tollvane
