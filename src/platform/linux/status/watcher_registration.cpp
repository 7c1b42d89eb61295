#include "platform/linux/status/watcher_registration.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QStringList>

namespace tollvane {
namespace {

// The name that hosts really use; the one in the protocol's text (org.freedesktop...) never caught on.
constexpr auto kWatcher = "org.kde.StatusNotifierWatcher";
constexpr auto kWatcherPath = "/StatusNotifierWatcher";

QDBusMessage watcherCall(const char* interface, const char* method) {
  QDBusMessage call = QDBusMessage::createMethodCall(QString::fromLatin1(kWatcher), QString::fromLatin1(kWatcherPath),
                                                     QString::fromLatin1(interface), QString::fromLatin1(method));
  call.setAutoStartService(false);
  return call;
}

}  // namespace

WatcherRegistration::WatcherRegistration(QDBusConnection bus, QString itemService)
    : bus_(std::move(bus)),
      watcher_(QString::fromLatin1(kWatcher), bus_, QDBusServiceWatcher::WatchForOwnerChange),
      itemService_(std::move(itemService)) {
  connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& newOwner) { watcherChanged(newOwner); });
  bus_.connect(QString::fromLatin1(kWatcher), QString::fromLatin1(kWatcherPath), QString::fromLatin1(kWatcher),
               QStringLiteral("StatusNotifierHostRegistered"), this, SLOT(hostRegistered()));
  findWatcher();
}

void WatcherRegistration::findWatcher() {
  QDBusMessage call =
      QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                     QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetNameOwner"));
  call << QString::fromLatin1(kWatcher);
  auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(reply, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
    finished->deleteLater();
    const QDBusPendingReply<QString> owner = *finished;
    if (owner.isValid()) {
      watcherChanged(owner.value());
    }
  });
}

// Both the first question and the bus's own signal may name the same owner, in either order.
void WatcherRegistration::watcherChanged(const QString& owner) {
  if (owner == registeredWith_) {
    return;
  }
  registeredWith_ = owner;
  if (!owner.isEmpty()) {
    registerItem();
  }
}

void WatcherRegistration::registerItem() {
  QDBusMessage call = watcherCall(kWatcher, "RegisterStatusNotifierItem");
  call << itemService_;
  bus_.asyncCall(call);  // a bar that refuses the item shows none, and there is nobody to tell
}

void WatcherRegistration::hostRegistered() {
  QDBusMessage call = watcherCall("org.freedesktop.DBus.Properties", "Get");
  call << QString::fromLatin1(kWatcher) << QStringLiteral("RegisteredStatusNotifierItems");
  auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(reply, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
    finished->deleteLater();
    const QDBusPendingReply<QDBusVariant> answer = *finished;
    if (!answer.isValid()) {
      return;
    }
    for (const QString& item : answer.value().variant().toStringList()) {
      if (isOurs(item)) {
        return;
      }
    }
    registerItem();
  });
}

// Watchers list an item by its name or by its connection, with or without the object's path behind it.
bool WatcherRegistration::isOurs(const QString& item) const {
  const QString name = item.section(u'/', 0, 0);
  return name == itemService_ || name == bus_.baseService();
}

}  // namespace tollvane
