#include "platform/linux/desktop/status_host_watch.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <utility>

namespace tollvane {
namespace {

const QString service = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString path = QStringLiteral("/StatusNotifierWatcher");

}  // namespace

StatusHostWatch::StatusHostWatch(QDBusConnection bus, std::function<void(bool)> onChange)
    : bus_(std::move(bus)),
      watcher_(service, bus_, QDBusServiceWatcher::WatchForOwnerChange),
      onChange_(std::move(onChange)) {
  if (!bus_.isConnected()) return;
  connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] { ask(); });
  for (const char* change : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
    bus_.connect(service, path, service, QString::fromLatin1(change), this, SLOT(ask()));
  ask();
}

void StatusHostWatch::ask() {
  QDBusMessage call = QDBusMessage::createMethodCall(service, path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                     QStringLiteral("Get"));
  call.setAutoStartService(false);
  call << service << QStringLiteral("IsStatusNotifierHostRegistered");
  auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(reply, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
    finished->deleteLater();
    const QDBusPendingReply<QDBusVariant> answer = *finished;
    // Without a watcher there is nobody to answer, and no host.
    set(answer.isValid() && answer.value().variant().toBool());
  });
}

void StatusHostWatch::set(bool hasHost) {
  if (hasHost == std::exchange(hasHost_, hasHost)) return;
  onChange_(hasHost);
}

}  // namespace tollvane
