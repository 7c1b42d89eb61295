// Where Tollvane starts on Linux. There is no command line: whatever is given is ignored.

#include <QGuiApplication>
#include <cstdio>
#include <cstdlib>

#include "app/app_delegate.h"
#include "platform/linux/linux_platform.h"
#include "platform/linux/system/termination_signals.h"

namespace {

using namespace tollvane;

int refuse(const char* sentence) {
  std::fprintf(stderr, "Tollvane: %s\n", sentence);
  return EXIT_FAILURE;
}

bool isSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool hasDesktop() { return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM"); }

}  // namespace

int main(int argc, char* argv[]) {
  const auto bundle = ExecutableBundle::runningProgramsDirectory();
  if (!bundle) return refuse("cannot find out where this program stands; is /proc mounted?");
  if (!XdgLocations().applicationSupport()) return refuse("there is no home directory for this user.");
  if (!hasDesktop()) return refuse("there is no desktop session here: neither DISPLAY nor WAYLAND_DISPLAY is set.");

  QGuiApplication application(argc, argv);
  QGuiApplication::setApplicationName("Tollvane");
  QGuiApplication::setDesktopFileName("tollvane");
  QGuiApplication::setQuitOnLastWindowClosed(false);

  LinuxPlatform platform(*bundle);
  AppDelegate delegate(platform.roles());
  const TerminationSignals signals([] { QCoreApplication::quit(); });
  QObject::connect(&application, &QCoreApplication::aboutToQuit, [&] { delegate.applicationWillTerminate(); });
  delegate.applicationDidFinishLaunching();
  return QGuiApplication::exec();
}
