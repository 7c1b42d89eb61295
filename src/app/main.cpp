// Where Tollvane starts on Linux. It has no command line of its own; what the desktop says about a start, it says in
// the environment.

#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/app_delegate.h"
#include "platform/linux/desktop/session_end.h"
#include "platform/linux/desktop/single_instance.h"
#include "platform/linux/desktop/start_mark.h"
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

// How Qt is to draw, where the user has not said it. Not for the programs that are started from here.
class DisplayChoice {
 public:
  DisplayChoice() {
    // The bell needs the bus only. Where Qt's part for this kind of display is not installed, it shows itself without.
    choose("QT_QPA_PLATFORM", isSet("WAYLAND_DISPLAY") ? "wayland;xcb;offscreen" : "xcb;offscreen");
    // A menu and a few windows need no graphics driver, which is four times as large as all of Tollvane.
    choose("QT_WAYLAND_CLIENT_BUFFER_INTEGRATION", "none");
  }
  ~DisplayChoice() {
    for (const char* name : chosen_) qunsetenv(name);
  }
  DisplayChoice(const DisplayChoice&) = delete;
  DisplayChoice& operator=(const DisplayChoice&) = delete;

 private:
  void choose(const char* name, const char* value) {
    if (isSet(name)) return;
    qputenv(name, value);
    chosen_.push_back(name);
  }

  std::vector<const char*> chosen_;
};

// What the desktop says about this start, taken out of the environment: it is about no other program.
struct StartNotice {
  const bool atLogin = qEnvironmentVariable(startedAtLogin) == QLatin1String("1");
  const std::string token =
      (isSet("XDG_ACTIVATION_TOKEN") ? qgetenv("XDG_ACTIVATION_TOKEN") : qgetenv("DESKTOP_STARTUP_ID")).toStdString();

  StartNotice() {
    // Qt itself takes the other one, on X11.
    for (const char* name : {startedAtLogin, "XDG_ACTIVATION_TOKEN"}) qunsetenv(name);
  }
};

// Calls back once, whichever way the program ends: out of its event loop, or by the toolkit, which leaves through
// exit() when the display server is gone.
class TheEnd {
 public:
  explicit TheEnd(std::function<void()> handler) {
    handler_ = std::move(handler);
    std::atexit(TheEnd::tell);
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, TheEnd::tell);
  }
  ~TheEnd() { tell(); }
  TheEnd(const TheEnd&) = delete;
  TheEnd& operator=(const TheEnd&) = delete;

 private:
  static void tell() {
    if (const auto handler = std::exchange(handler_, nullptr)) handler();
  }

  inline static std::function<void()> handler_;
};

}  // namespace

int main(int argc, char* argv[]) {
  const auto bundle = ExecutableBundle::runningProgramsDirectory();
  if (!bundle) return refuse("cannot find out where this program stands; is /proc mounted?");
  if (!XdgLocations().applicationSupport()) return refuse("there is no home directory for this user.");
  if (!hasDesktop()) return refuse("there is no desktop session here: neither DISPLAY nor WAYLAND_DISPLAY is set.");

  const StartNotice notice;
  std::optional<DisplayChoice> choice(std::in_place);
  QApplication application(argc, argv);
  choice.reset();
  QApplication::setApplicationName("Tollvane");
  QApplication::setDesktopFileName("tollvane");
  QApplication::setQuitOnLastWindowClosed(false);

  SingleInstance instance(QDBusConnection::sessionBus());
  switch (instance.claim(notice.token)) {
    case SingleInstance::Start::first:
      break;
    case SingleInstance::Start::another:
      return EXIT_SUCCESS;
    case SingleInstance::Start::deadlock:
      return refuse("it is running already, but does not answer. End it before you start it again.");
  }
  const SessionEnd sessionEnd(QDBusConnection::sessionBus());

  LinuxPlatform platform(*bundle);
  platform.setToken(notice.token);
  // At login nobody waits for an answer.
  if (notice.atLogin) platform.onNoStatusBar() = nullptr;
  AppDelegate delegate(platform.roles());
  const TerminationSignals signals([] { QCoreApplication::quit(); });
  instance.onReopen = [&](const std::string& token) {
    platform.setToken(token);
    delegate.applicationShouldHandleReopen(false);
  };
  const TheEnd theEnd([&] { delegate.applicationWillTerminate(); });
  delegate.applicationDidFinishLaunching();
  return QApplication::exec();
}
