#include "platform/linux/workspace/bus_activation.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>
#include <utility>

#include "platform/linux/workspace/activation_token.h"

namespace tollvane {
namespace {

constexpr int patienceInMilliseconds = 2000;

// "org.example.My-Player" -> "/org/example/My_Player"
QString objectPath(QString id) { return u'/' + id.replace(u'.', u'/').replace(u'-', u'_'); }

bool isBusName(const QString& id) {
  const QDBusMessage probe = QDBusMessage::createMethodCall(id, QStringLiteral("/"), {}, QStringLiteral("x"));
  return id.contains(u'.') && id.size() <= 255 && !probe.service().isEmpty();
}

}  // namespace

void BusActivation::raise(const ActivationTarget& target, std::function<void(Raised)> done) {
  // It tells no titles. Any other application may open something new instead, such as an empty document.
  if (target.isTitleNeeded || target.entry == nullptr || !target.entry->singleMainWindow) return done(Raised::unknown);
  const QString id = QString::fromStdString(target.entry->id);
  if (!target.entry->dbusActivatable || !isBusName(id) || !bus_.isConnected())
    return startAgain(target, std::move(done));
  QDBusMessage call = QDBusMessage::createMethodCall(id, objectPath(id), QStringLiteral("org.freedesktop.Application"),
                                                     QStringLiteral("Activate"));
  // Only the instance that runs: another one is not what made the sound.
  call.setAutoStartService(false);
  call << platformData(tokens_ ? tokens_() : std::string());
  auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(call, patienceInMilliseconds), QCoreApplication::instance());
  QObject::connect(reply, &QDBusPendingCallWatcher::finished, reply,
                   alive_.guard([this, target, done = std::move(done)](QDBusPendingCallWatcher* finished) {
                     finished->deleteLater();
                     if (!QDBusPendingReply<>(*finished).isError()) return done(Raised::yes);
                     startAgain(target, done);
                   }));
}

void BusActivation::startAgain(const ActivationTarget& target, std::function<void(Raised)> done) {
  if (target.entry->path.empty()) return done(Raised::unknown);
  launcher_.launch(target.entry->path, {},
                   [done = std::move(done)](bool started) { done(started ? Raised::yes : Raised::unknown); });
}

}  // namespace tollvane
