// Whether anything on this desktop shows status items: a host of the StatusNotifierItem protocol. Told by the bus's
// signals, never by asking again and again. Main thread only.
// Source: the page StatusNotifierItem of the freedesktop.org wiki.
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <functional>

namespace tollvane {

class StatusHostWatch : public QObject {
  Q_OBJECT

 public:
  // `onChange` is called, later, whenever a host has come or the last one has gone. There is none at first.
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
