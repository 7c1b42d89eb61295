#include "platform/linux/workspace/shell_windows.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <vector>

namespace tollvane {
namespace {

constexpr int shellPatience = 1000;  // milliseconds

QDBusMessage callShell(const char* method) {
  QDBusMessage call =
      QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Shell"), QStringLiteral("/com/quarnel/tollvane/shell"),
                                     QStringLiteral("com.quarnel.tollvane.Shell"), QString::fromLatin1(method));
  call.setAutoStartService(false);
  return call;
}

// a(tusssb): number, process, title, two names, and whether it is in front; the topmost last.
std::optional<std::vector<OpenWindow>> windowsIn(const QDBusMessage& answer) {
  if (answer.signature() != QLatin1String("a(tusssb)")) return std::nullopt;
  const auto list = answer.arguments().constFirst().value<QDBusArgument>();
  std::vector<OpenWindow> windows;
  list.beginArray();
  while (!list.atEnd()) {
    qulonglong id = 0;
    uint pid = 0;
    QString title, windowClass, application;
    bool inFront = false;
    list.beginStructure();
    list >> id >> pid >> title >> windowClass >> application >> inFront;
    list.endStructure();
    windows.push_back({.id = std::to_string(id),
                       .pid = static_cast<Pid>(pid),
                       .names = {windowClass.toStdString(), application.toStdString()},
                       .title = title.toStdString(),
                       .isActive = inFront,
                       .height = static_cast<double>(windows.size())});
  }
  list.endArray();
  return windows;
}

}  // namespace

void ShellWindows::raise(const ActivationTarget& target, std::function<void(Raised)> done) {
  if (!bus_.isConnected()) return done(Raised::unknown);
  auto* reply =
      new QDBusPendingCallWatcher(bus_.asyncCall(callShell("Windows"), shellPatience), QCoreApplication::instance());
  QObject::connect(reply, &QDBusPendingCallWatcher::finished, reply,
                   alive_.guard([this, target, done = std::move(done)](QDBusPendingCallWatcher* finished) {
                     finished->deleteLater();
                     const auto windows = windowsIn(finished->reply());
                     if (!windows) return done(Raised::unknown);
                     const auto best = bestWindowOf(*windows, target);
                     if (!best) return done(Raised::noWindow);
                     activate(std::stoull(best->id), done);
                   }));
}

void ShellWindows::activate(qulonglong id, const std::function<void(Raised)>& done) {
  auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(callShell("Activate") << id, shellPatience),
                                            QCoreApplication::instance());
  QObject::connect(reply, &QDBusPendingCallWatcher::finished, reply,
                   alive_.guard([done](QDBusPendingCallWatcher* finished) {
                     finished->deleteLater();
                     const QDBusPendingReply<bool> answer = *finished;
                     done(answer.isValid() && answer.value() ? Raised::yes : Raised::unknown);
                   }));
}

}  // namespace tollvane
