#include "platform/linux/session/session_end.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <QGuiApplication>
#include <QSessionManager>
#include <csignal>
#include <cstdlib>
#include <utility>

namespace tollvane {
namespace {

int writingEnd = -1;

void wake(int) {
  const char byte = 0;
  [[maybe_unused]] const auto written = ::write(writingEnd, &byte, 1);
}

std::function<void()> lastWord;

}  // namespace

SessionEnd::SessionEnd(QDBusConnection bus) {
  // The autostart entry starts the program in the next session; the session manager must not start a second one.
  connect(qGuiApp, &QGuiApplication::commitDataRequest, this,
          [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); });
  bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"), QStringLiteral("org.freedesktop.DBus.Local"),
              QStringLiteral("Disconnected"), this, SLOT(busIsGone()));
}

void SessionEnd::busIsGone() { QCoreApplication::quit(); }

// A handler and a socket pair instead of signalfd, because children would inherit the signal mask that signalfd needs.
TerminationSignals::TerminationSignals(std::function<void()> onSignal) {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) return;
  fd_ = UniqueFd(ends[0]);
  writingEnd = ends[1];
  notifier_ = std::make_unique<QSocketNotifier>(fd_.get(), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this, onSignal = std::move(onSignal)] {
    notifier_->setEnabled(false);
    onSignal();
  });
  struct sigaction action {};
  action.sa_handler = wake;
  action.sa_flags = SA_RESTART;
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) ::sigaction(signal, &action, nullptr);
}

LastWord::LastWord(std::function<void()> handler) {
  lastWord = std::move(handler);
  std::atexit(say);
  QObject::connect(qApp, &QCoreApplication::aboutToQuit, say);
}

void LastWord::say() {
  if (const auto handler = std::exchange(lastWord, nullptr)) handler();
}

}  // namespace tollvane
