#include "platform/linux/bell/status_watcher.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QStringList>
#include <utility>

namespace tollvane {
namespace {

// The name that bars really use, instead of the one in the protocol's text (org.freedesktop...).
const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

// XApp's watcher has this name besides the usual one.
const QString xAppName = QStringLiteral("org.x.StatusNotifierWatcher");

QDBusMessage watcherCall(const QString& interface, const char* method) {
  QDBusMessage call = QDBusMessage::createMethodCall(watcherName, watcherPath, interface, QString::fromLatin1(method));
  call.setAutoStartService(false);
  return call;
}

// `answered` gets the unique name of the owner. It is not called if nobody owns the name.
void askForOwner(const QDBusConnection& bus, QObject* asker, const QString& name,
                 std::function<void(const QString& owner)> answered) {
  QDBusMessage call =
      QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                     QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetNameOwner"));
  call << name;
  auto* reply = new QDBusPendingCallWatcher(bus.asyncCall(call), asker);
  QObject::connect(reply, &QDBusPendingCallWatcher::finished, asker,
                   [answered = std::move(answered)](QDBusPendingCallWatcher* finished) {
                     finished->deleteLater();
                     const QDBusPendingReply<QString> owner = *finished;
                     if (owner.isValid()) answered(owner.value());
                   });
}

// Asks for a property of the watcher. `answered` gets an invalid value if there is no watcher or no such property.
void askWatcher(const QDBusConnection& bus, QObject* asker, const char* property,
                std::function<void(const QVariant& value)> answered) {
  QDBusMessage call = watcherCall(QStringLiteral("org.freedesktop.DBus.Properties"), "Get");
  call << watcherName << QString::fromLatin1(property);
  auto* reply = new QDBusPendingCallWatcher(bus.asyncCall(call), asker);
  QObject::connect(reply, &QDBusPendingCallWatcher::finished, asker,
                   [answered = std::move(answered)](QDBusPendingCallWatcher* finished) {
                     finished->deleteLater();
                     const QDBusPendingReply<QDBusVariant> answer = *finished;
                     answered(answer.isValid() ? answer.value().variant() : QVariant());
                   });
}

}  // namespace

WatcherRegistration::WatcherRegistration(QDBusConnection bus, QString itemService)
    : bus_(std::move(bus)),
      watcher_(watcherName, bus_, QDBusServiceWatcher::WatchForOwnerChange),
      itemService_(std::move(itemService)) {
  connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& newOwner) { watcherChanged(newOwner); });
  bus_.connect(watcherName, watcherPath, watcherName, QStringLiteral("StatusNotifierHostRegistered"), this,
               SLOT(hostRegistered()));
  findWatcher();
}

void WatcherRegistration::findWatcher() {
  askForOwner(bus_, this, watcherName, [this](const QString& owner) { watcherChanged(owner); });
}

// The first question and the bus's own signal may both report the same owner, in either order.
void WatcherRegistration::watcherChanged(const QString& owner) {
  if (owner == registeredWith_) return;
  registeredWith_ = owner;
  if (!owner.isEmpty()) registerItem();
}

void WatcherRegistration::registerItem() {
  QDBusMessage call = watcherCall(watcherName, "RegisterStatusNotifierItem");
  call << itemService_;
  bus_.asyncCall(call);  // nothing can be done if the watcher refuses
}

void WatcherRegistration::hostRegistered() {
  askWatcher(bus_, this, "RegisteredStatusNotifierItems", [this](const QVariant& items) {
    if (!items.isValid()) return;
    for (const QString& item : items.toStringList())
      if (isOurs(item)) return;
    registerItem();
  });
}

// Watchers list an item by its name or by its connection, with or without the object's path behind it.
bool WatcherRegistration::isOurs(const QString& item) const {
  const QString name = item.section(u'/', 0, 0);
  return name == itemService_ || name == bus_.baseService();
}

XAppWatch::XAppWatch(const QDBusConnection& bus, const std::function<void(bool)>& onChange)
    : watcher_(xAppName, bus, QDBusServiceWatcher::WatchForOwnerChange) {
  QObject::connect(
      &watcher_, &QDBusServiceWatcher::serviceOwnerChanged, &watcher_,
      [onChange](const QString&, const QString&, const QString& newOwner) { onChange(!newOwner.isEmpty()); });
  askForOwner(bus, &watcher_, xAppName, [onChange](const QString&) { onChange(true); });
}

StatusHostWatch::StatusHostWatch(QDBusConnection bus, std::function<void(bool)> onChange)
    : bus_(std::move(bus)),
      watcher_(watcherName, bus_, QDBusServiceWatcher::WatchForOwnerChange),
      onChange_(std::move(onChange)) {
  if (!bus_.isConnected()) return;
  connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] { ask(); });
  for (const char* change : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
    bus_.connect(watcherName, watcherPath, watcherName, QString::fromLatin1(change), this, SLOT(ask()));
  ask();
}

void StatusHostWatch::ask() {
  askWatcher(bus_, this, "IsStatusNotifierHostRegistered", [this](const QVariant& hasHost) { set(hasHost.toBool()); });
}

void StatusHostWatch::set(bool hasHost) {
  if (hasHost == std::exchange(hasHost_, hasHost)) return;
  onChange_(hasHost);
}

}  // namespace tollvane
