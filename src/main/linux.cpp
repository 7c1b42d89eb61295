// Where Tollvane starts on Linux:
//   Tollvane                starts it, or brings the one that runs forward
//   Tollvane --show-menu    the same, and opens the menu of recent sounds, for a keyboard shortcut
//   Tollvane --doctor ...   a command that prints something and ends; see linux_commands.h
// What it must know about a start by the desktop, the desktop puts into the environment.

#include <QApplication>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "app/app_delegate.h"
#include "main/linux_commands.h"
#include "platform/linux/linux_platform.h"
#include "platform/linux/session/session_end.h"
#include "platform/linux/session/session_start.h"
#include "platform/linux/session/single_instance.h"
#include "platform/linux/system/resting_memory.h"

namespace {

int refuse(const std::string& sentence) {
  std::fprintf(stderr, "Tollvane: %s\n", sentence.c_str());
  return EXIT_FAILURE;
}

constexpr const char* showMenuOption = "--show-menu";

// The first argument that Tollvane does not know. The toolkit has taken its own out.
std::optional<std::string> strangeArgument(const QStringList& arguments) {
  for (const QString& argument : arguments.mid(1))
    if (argument != QLatin1String(showMenuOption)) return argument.toStdString();
  return std::nullopt;
}

}  // namespace

int main(int argc, char* argv[]) {
  using namespace tollvane;
  const auto bundle = ExecutableBundle::runningProgramsDirectory();
  if (!bundle) return refuse("cannot find out where this program stands; is /proc mounted?");
  if (const auto exitCode = runCommand(argc, argv, *bundle)) return *exitCode;
  if (!dataFolder()) return refuse("there is no home directory for this user.");
  if (!hasDesktop()) return refuse("there is no desktop session here: neither DISPLAY nor WAYLAND_DISPLAY is set.");

  const StartNotice notice;
  std::optional<DisplayChoice> choice(std::in_place);
  QApplication application(argc, argv);
  choice.reset();
  QApplication::setApplicationName("Tollvane");
  QApplication::setDesktopFileName("tollvane");
  QApplication::setQuitOnLastWindowClosed(false);

  if (const auto strange = strangeArgument(QApplication::arguments()))
    return refuse("there is no option " + *strange + "; --help lists them.");
  const bool showMenu = QApplication::arguments().contains(QLatin1String(showMenuOption));

  using Wish = SingleInstance::Wish;
  SingleInstance instance(QDBusConnection::sessionBus());
  switch (instance.claim(notice.token(), showMenu ? Wish::showMenu : Wish::comeForward)) {
    case SingleInstance::Start::first:
      break;
    case SingleInstance::Start::another:
      return EXIT_SUCCESS;
    case SingleInstance::Start::refused:
      return refuse("this desktop draws the menu itself, and opens it only for a click on the bell.");
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
  instance.onShowMenu = [&](const std::string& token) {
    platform.setToken(token);
    return platform.showMenu();
  };
  instance.onState = [&] { return delegate.state(); };
  const LastWord lastWord([&] { delegate.applicationWillTerminate(); });
  delegate.applicationDidFinishLaunching();
  if (showMenu) platform.showMenu();
  RestingMemory memory(std::chrono::seconds(2));
  return QApplication::exec();
}
