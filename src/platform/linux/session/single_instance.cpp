#include "platform/linux/session/single_instance.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <csignal>
#include <thread>
#include <utility>

namespace tollvane {
namespace {

constexpr QLatin1String noMenu("com.quarnel.tollvane.Error.NoMenu");

QDBusMessage callFor(SingleInstance::Wish wish, const std::string& token) {
  const bool showMenu = wish == SingleInstance::Wish::showMenu;
  QDBusMessage call = QDBusMessage::createMethodCall(
      SingleInstance::busName, SingleInstance::objectPath, QStringLiteral("org.freedesktop.Application"),
      showMenu ? QStringLiteral("ActivateAction") : QStringLiteral("Activate"));
  call.setAutoStartService(false);
  if (showMenu) call << SingleInstance::showMenu << QVariantList();
  return call << platformData(token);
}

}  // namespace

// The object is registered before the name, so that a program that finds the name can call it.
SingleInstance::SingleInstance(QDBusConnection bus) : bus_(std::move(bus)) {
  new ApplicationAdaptor(this);
  new StateAdaptor(this);
  if (bus_.isConnected()) bus_.registerObject(objectPath, this, QDBusConnection::ExportAdaptors);
}

SingleInstance::~SingleInstance() {
  if (!bus_.isConnected()) return;
  bus_.unregisterObject(objectPath);
  bus_.unregisterService(busName);
}

SingleInstance::Start SingleInstance::claim(const std::string& token, Wish wish, std::chrono::milliseconds patience) {
  if (!bus_.isConnected()) return Start::first;
  // The first instance may end between the two questions.
  constexpr int attempts = 5;
  for (int i = 0; i < attempts; ++i) {
    if (ownsName()) return Start::first;
    const QDBusMessage answer = bus_.call(callFor(wish, token), QDBus::Block, static_cast<int>(patience.count()));
    if (answer.type() == QDBusMessage::ReplyMessage) return Start::another;
    if (answer.errorName() == noMenu) return Start::refused;
    const QDBusError::ErrorType error = QDBusError(answer).type();
    const bool hasEnded = error == QDBusError::ServiceUnknown || error == QDBusError::NoReply;
    if (!hasEnded || bus_.interface()->isServiceRegistered(busName).value()) return Start::deadlock;
  }
  return Start::deadlock;
}

// A bus that refuses the name to every program (a sandbox's bus does) counts as no bus.
bool SingleInstance::ownsName() {
  const auto reply = bus_.interface()->registerService(busName, QDBusConnectionInterface::DontQueueService,
                                                       QDBusConnectionInterface::DontAllowReplacement);
  return !reply.isValid() || reply.value() != QDBusConnectionInterface::ServiceNotRegistered;
}

void ApplicationAdaptor::ActivateAction(const QString& name, const QVariantList&, const QVariantMap& platformData,
                                        const QDBusMessage& message) {
  if (name != SingleInstance::showMenu || !instance_->onShowMenu) return Activate(platformData);
  if (instance_->onShowMenu(tokenOf(platformData))) return;
  message.setDelayedReply(true);
  instance_->bus().send(
      message.createErrorReply(noMenu, QStringLiteral("The desktop lets no program open this menu.")));
}

std::optional<FirstInstance> FirstInstance::find(const QDBusConnection& bus) {
  if (!bus.isConnected()) return std::nullopt;
  const auto pid = bus.interface()->servicePid(SingleInstance::busName);
  return pid.isValid() ? std::optional(FirstInstance{static_cast<Pid>(pid.value())}) : std::nullopt;
}

std::string FirstInstance::state(const QDBusConnection& bus) {
  QDBusMessage call =
      QDBusMessage::createMethodCall(SingleInstance::busName, SingleInstance::objectPath,
                                     QStringLiteral("com.quarnel.tollvane.State"), QStringLiteral("Describe"));
  call.setAutoStartService(false);
  constexpr int milliseconds = 3000;
  const QDBusReply<QString> answer = bus.call(call, QDBus::Block, milliseconds);
  return answer.isValid() ? answer.value().toStdString() : std::string();
}

bool FirstInstance::end(const QDBusConnection& bus, std::chrono::milliseconds patience) const {
  const auto isThere = [&] { return bus.interface()->isServiceRegistered(SingleInstance::busName).value(); };
  constexpr std::chrono::milliseconds pause{50};
  if (::kill(pid, SIGTERM) != 0) return !isThere();
  for (auto waited = std::chrono::milliseconds::zero(); isThere(); waited += pause) {
    if (waited >= patience) return false;
    std::this_thread::sleep_for(pause);
  }
  return true;
}

}  // namespace tollvane
