// Where Tollvane starts on Linux. It has no command line of its own; what it must know about a start, the desktop puts
// into the environment.

#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "app/app_delegate.h"
#include "platform/linux/linux_platform.h"
#include "platform/linux/session/session_end.h"
#include "platform/linux/session/session_start.h"
#include "platform/linux/session/single_instance.h"

namespace {

int refuse(const char* sentence) {
  std::fprintf(stderr, "Tollvane: %s\n", sentence);
  return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char* argv[]) {
  using namespace tollvane;
  const auto bundle = ExecutableBundle::runningProgramsDirectory();
  if (!bundle) return refuse("cannot find out where this program stands; is /proc mounted?");
  if (!dataFolder()) return refuse("there is no home directory for this user.");
  if (!hasDesktop()) return refuse("there is no desktop session here: neither DISPLAY nor WAYLAND_DISPLAY is set.");

  const StartNotice notice;
  std::optional<DisplayChoice> choice(std::in_place);
  QApplication application(argc, argv);
  choice.reset();
  QApplication::setApplicationName("Tollvane");
  QApplication::setDesktopFileName("tollvane");
  QApplication::setQuitOnLastWindowClosed(false);

  SingleInstance instance(QDBusConnection::sessionBus());
  switch (instance.claim(notice.token())) {
    case SingleInstance::Start::first:
      break;
    case SingleInstance::Start::another:
      return EXIT_SUCCESS;
    case SingleInstance::Start::deadlock:
      return refuse("it is running already, but does not answer. End it before you start it again.");
  }
  const SessionEnd sessionEnd(QDBusConnection::sessionBus());

  LinuxPlatform platform(*bundle);
  platform.setToken(notice.token());
  if (notice.atLogin()) platform.onNoStatusBar() = nullptr;  // at login the user waits for no answer
  AppDelegate delegate(platform.roles());
  const TerminationSignals signals([] { QCoreApplication::quit(); });
  instance.onReopen = [&](const std::string& token) {
    platform.setToken(token);
    delegate.applicationShouldHandleReopen(false);
  };
  const LastWord lastWord([&] { delegate.applicationWillTerminate(); });
  delegate.applicationDidFinishLaunching();
  return QApplication::exec();
}
