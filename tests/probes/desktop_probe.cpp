// The parts of the Linux platform that deal with other programs' windows, as a program that a test starts in a desktop.
// It obeys commands on its standard input, one a line:
//
//   activate PID [TITLE]  -> "activated yes" or "activated no"
//   running               -> a line for each application: PID, a tab, its name; then "end"
//   open PATH             -> "ok" at once
//   url URL               -> "ok" at once
//   url-in URL PATH       -> "started yes" or "started no"
//   alert TEXT|INFORMATION|BUTTON|...  -> "answered NUMBER" when the user has answered
//   play FILE             -> "ok": a program that this one has started plays it
//   title TEXT            -> "ok": the title of all our windows
//   panel X Y WIDTH HEIGHT -> "shown": a panel there, which reserves no room for itself
//   own NAME              -> "ok": owns this name on the session bus
//   ask                   -> "ok", after the answers to everything before
#include <QApplication>
#include <QMessageBox>
#include <QProcess>
#include <QRasterWindow>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "platform/linux/system/clock_and_dates.h"
#include "platform/linux/system/qt_main_queue.h"
#include "platform/linux/windows/linux_application.h"
#include "platform/linux/windows/qt_alerts.h"
#include "platform/linux/workspace/bus_activation.h"
#include "platform/linux/workspace/kwin_scripting.h"
#include "platform/linux/workspace/launcher.h"
#include "platform/linux/workspace/linux_workspace.h"
#include "platform/linux/workspace/shell_windows.h"
#include "platform/linux/workspace/sway_ipc.h"
#include "platform/linux/workspace/wayland_toplevels.h"
#include "platform/linux/workspace/window_raiser.h"
#include "platform/linux/workspace/x11_raiser.h"
#include "tests/probes/probe_lines.h"

namespace {

using namespace tollvane;
using test::say;

const char* yesOrNo(bool value) { return value ? "yes" : "no"; }

struct Desktop {
  SystemClock clock;
  QtMainQueue queue;
  ProcFs processes;
  DesktopEntries entries;
  XcbWindows windows{clock};
  Applications applications{processes, entries, windows};
  TokenSource tokens = [] { return std::string(); };
  GioLauncher launcher{tokens};
  SwayIpc sway;
  KWinScripting kwin{QDBusConnection::sessionBus()};
  ShellWindows gnome{QDBusConnection::sessionBus()};
  WaylandToplevels wayland;
  X11Raiser x11;
  BusActivation busActivation{QDBusConnection::sessionBus(), launcher, tokens};
  Activator activator{{&sway, &kwin, &gnome, &wayland, &x11, &busActivation}, queue};
  LinuxWorkspace workspace{applications, clock, activator, launcher};
  LinuxApplication application{tokens};
  QtAlerts alerts{[this](QMessageBox& alert) { application.bringForward(alert); }};
  std::unique_ptr<QWindow> panel;
};

// Answers when it is shown.
class Panel : public QRasterWindow {
 public:
  explicit Panel(const QRect& place) {
    constexpr int dock = 4;
    setProperty("_q_xcb_wm_window_type", dock);  // the toolkit has no other name for it
    setGeometry(place);
    show();
  }

 protected:
  void exposeEvent(QExposeEvent* event) override {
    QRasterWindow::exposeEvent(event);
    if (isExposed() && !std::exchange(told_, true)) say("shown");
  }

 private:
  bool told_ = false;
};

void showAlert(Desktop& desktop, std::istringstream& line) {
  Alert alert;
  alert.buttons.clear();
  std::getline(line >> std::ws, alert.messageText, '|');
  std::getline(line, alert.informativeText, '|');
  for (std::string button; std::getline(line, button, '|');) alert.buttons.push_back(button);
  desktop.application.activateIgnoringOtherApps();
  desktop.alerts.show(alert, [](std::size_t button) { say("answered " + std::to_string(button)); });
}

void showPanel(Desktop& desktop, std::istringstream& line) {
  int x = 0, y = 0, width = 0, height = 0;
  line >> x >> y >> width >> height;
  desktop.panel = std::make_unique<Panel>(QRect(x, y, width, height));
}

void obey(Desktop& desktop, const std::string& command) {
  std::istringstream line(command);
  std::string verb;
  line >> verb;
  if (verb == "activate") {
    RunningApplication application;
    std::string title;
    std::getline(line >> application.pid >> std::ws, title);
    desktop.workspace.activate(application, title,
                               [](bool forward) { say(std::string("activated ") + yesOrNo(forward)); });
  } else if (verb == "running") {
    for (const auto& each : desktop.workspace.regularApplications())
      say(std::to_string(each.pid) + "\t" + each.localizedName.value_or(""));
    say("end");
  } else if (verb == "open" || verb == "url") {
    std::string target;
    std::getline(line >> std::ws, target);
    verb == "open" ? desktop.workspace.open(target, [](bool) {}) : desktop.workspace.openURL(target);
    say("ok");
  } else if (verb == "url-in") {
    std::string url, path;
    line >> url >> path;
    desktop.workspace.openURL(url, path, [](bool started) { say(std::string("started ") + yesOrNo(started)); });
  } else if (verb == "alert") {
    showAlert(desktop, line);
  } else if (verb == "own") {
    std::string name;
    line >> name;
    say(QDBusConnection::sessionBus().registerService(QString::fromStdString(name)) ? "ok" : "refused");
  } else if (verb == "play") {
    std::string file;
    std::getline(line >> std::ws, file);
    auto* player = new QProcess(QCoreApplication::instance());
    player->start(QStringLiteral("pw-play"), {QString::fromStdString(file)});
    say("ok");
  } else if (verb == "title") {
    std::string title;
    std::getline(line >> std::ws, title);
    for (QWidget* window : QApplication::topLevelWidgets()) window->setWindowTitle(QString::fromStdString(title));
    say("ok");
  } else if (verb == "panel") {
    showPanel(desktop, line);
  } else {
    say("ok");
  }
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  Desktop desktop;
  const test::ProbeLines lines([&desktop](const std::string& line) { obey(desktop, line); });
  say("ready");
  return QApplication::exec();
}
