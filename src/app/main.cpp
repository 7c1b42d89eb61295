// Where Tollvane starts on Linux. It has no command line of its own.

#include <QGuiApplication>
#include <cstdio>
#include <cstdlib>
#include <optional>

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

// The bell needs the bus only. Where Qt's part for this kind of display is not installed, it shows itself without.
class DisplayChoice {
 public:
  DisplayChoice() {
    if (!made_) return;
    qputenv("QT_QPA_PLATFORM", isSet("WAYLAND_DISPLAY") ? "wayland;xcb;offscreen" : "xcb;offscreen");
  }
  // Not for the programs that are started from here.
  ~DisplayChoice() {
    if (made_) qunsetenv("QT_QPA_PLATFORM");
  }
  DisplayChoice(const DisplayChoice&) = delete;
  DisplayChoice& operator=(const DisplayChoice&) = delete;

 private:
  const bool made_ = !isSet("QT_QPA_PLATFORM");
};

}  // namespace

int main(int argc, char* argv[]) {
  const auto bundle = ExecutableBundle::runningProgramsDirectory();
  if (!bundle) return refuse("cannot find out where this program stands; is /proc mounted?");
  if (!XdgLocations().applicationSupport()) return refuse("there is no home directory for this user.");
  if (!hasDesktop()) return refuse("there is no desktop session here: neither DISPLAY nor WAYLAND_DISPLAY is set.");

  std::optional<DisplayChoice> choice(std::in_place);
  QGuiApplication application(argc, argv);
  choice.reset();
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
