// The desktop's StatusNotifierWatcher, which knows the items and the bars that show them. The classes here wait for
// names and signals on the bus only, never for time. Main thread only.
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <functional>

namespace tollvane {

// Keeps one status item registered: once with each watcher, as soon as it appears.
class WatcherRegistration : public QObject {
  Q_OBJECT

 public:
  // `itemService`: the bus name of the item, which must be on the bus already: a bar may ask for its properties before
  // the event loop runs again.
  WatcherRegistration(QDBusConnection bus, QString itemService);

 private Q_SLOTS:
  // A bar that comes to a running watcher asks it for the items. If the watcher has lost ours, this registers it again.
  void hostRegistered();

 private:
  void findWatcher();
  void watcherChanged(const QString& owner);
  void registerItem();
  bool isOurs(const QString& item) const;

  QDBusConnection bus_;
  QDBusServiceWatcher watcher_;
  QString itemService_;
  QString registeredWith_;  // unique name of the watcher that knows the item; empty if none exists
};

// Whether the desktop's watcher is XApp's, as in Cinnamon. It hands an icon's name on as a file, and Cinnamon's panel
// draws nothing for a symbolic icon that is a file. It draws the pictures of an item that has no name for its icon.
class XAppWatch {
 public:
  // `onChange` is called, after the constructor, whenever that watcher has come or gone. Until then no
  // watcher of this kind is there.
  XAppWatch(const QDBusConnection& bus, const std::function<void(bool isThere)>& onChange);

 private:
  QDBusServiceWatcher watcher_;
};

// Whether anything on this desktop shows status items.
class StatusHostWatch : public QObject {
  Q_OBJECT

 public:
  // `onChange` is called, after the constructor, whenever the first bar has come or the last one has gone. At first
  // there is no bar.
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
