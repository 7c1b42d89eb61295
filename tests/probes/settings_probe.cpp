// The settings window, for tests and pictures: settings_probe SCENARIO.
// Obeys commands on its standard input, one a line:
//   show            brings it forward    scroll N        scrolls to N      top | bottom
//   scheme dark|light                    font POINTS FAMILY
//   grab FILE       a picture of it      where NAME      -> "where X Y", the middle of the control called NAME
//   frame           -> "frame X Y W H", with what the window manager draws, in device pixels
//   state           -> "on NAME" or "off NAME" for each switch and check box, then "window shown|hidden"
//   quit            ready   does nothing
//   -> "obeyed" after each line, and "painted" when the window has been painted for the first time
#include <QAbstractButton>
#include <QApplication>
#include <QScrollArea>
#include <QScrollBar>
#include <cstdio>
#include <sstream>
#include <string>
#include <utility>

#include "platform/linux/drawing/appearance.h"
#include "platform/linux/windows/linux_application.h"
#include "platform/linux/windows/settings_window.h"
#include "tests/probes/probe_lines.h"
#include "tests/probes/settings_scenarios.h"

namespace {

using namespace tollvane;
using test::say;

QWidget* page() {
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    if (widget->findChild<QScrollArea*>()) return widget;
  }
  return nullptr;
}

class Probe : public QObject {
 public:
  explicit Probe(const std::string& scenario) : scenario_(scenario) { qApp->installEventFilter(this); }

  void read(const std::string& order) {
    std::istringstream line(order);
    obey(line);
    say("obeyed");
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint && watched == page() && !std::exchange(painted_, true)) {
      QMetaObject::invokeMethod(
          this, [] { say("painted"); }, Qt::QueuedConnection);
    }
    return false;
  }

 private:
  // At the first opening, as in the application.
  void make() {
    if (window_) return;
    window_ = windows_.make({.title = scenario_.title()});
    window_->setContent(scenario_.content());
    scenario_.onChange([this] {
      if (std::exchange(due_, true)) return;
      QMetaObject::invokeMethod(
          qApp,
          [this] {
            due_ = false;
            window_->setContent(scenario_.content());
          },
          Qt::QueuedConnection);
    });
  }

  void obey(std::istringstream& line) {
    std::string command;
    std::string argument;
    line >> command >> std::ws;
    std::getline(line, argument);
    if (command == "ready") return;
    make();
    QScrollBar* bar = page()->findChild<QScrollArea*>()->verticalScrollBar();
    if (command == "show") window_->makeKeyAndOrderFront();
    if (command == "scroll") bar->setValue(std::stoi(argument));
    if (command == "top") bar->setValue(bar->minimum());
    if (command == "bottom") bar->setValue(bar->maximum());
    if (command == "scheme") {
      QApplication::setPalette(
          paletteFor(argument == "dark" ? ColorScheme::dark : ColorScheme::light, QApplication::palette()));
    }
    if (command == "font") {
      std::istringstream wish(argument);
      double points = 0;
      std::string family;
      wish >> points >> std::ws;
      std::getline(wish, family);
      QFont font(QString::fromStdString(family));
      font.setPointSizeF(points);
      QApplication::setFont(font);
    }
    if (command == "grab") {
      QCoreApplication::processEvents();
      page()->grab().save(QString::fromStdString(argument));
    }
    if (command == "where") where(QString::fromStdString(argument));
    if (command == "state") state();
    if (command == "frame") {
      const QRect frame = page()->frameGeometry();
      std::string place = "frame";
      for (const int each : {frame.x(), frame.y(), frame.width(), frame.height()})
        place += ' ' + std::to_string(qRound(each * page()->devicePixelRatioF()));
      say(place);
    }
    if (command == "quit") QCoreApplication::quit();
  }

  static void where(const QString& name) {
    for (const auto* button : page()->findChildren<QAbstractButton*>()) {
      if (button->accessibleName() != name && button->text() != name) continue;
      const QPoint middle = button->mapToGlobal(button->rect().center());
      say("where " + std::to_string(middle.x()) + ' ' + std::to_string(middle.y()));
    }
  }

  static void state() {
    for (const auto* button : page()->findChildren<QAbstractButton*>()) {
      if (button->isCheckable() && button->isVisibleTo(page()))
        say((button->isChecked() ? "on " : "off ") + button->accessibleName().toStdString());
    }
    say(page()->isVisible() ? "window shown" : "window hidden");
  }

  test::SettingsScenario scenario_;
  LinuxApplication application_{nullptr};
  QtSettingsWindows windows_{[this](QWidget& window) { application_.bringForward(window); }};
  std::unique_ptr<SettingsWindow> window_;
  bool due_ = false;
  bool painted_ = false;
};

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName("Tollvane");
  QApplication::setDesktopFileName("tollvane");
  QApplication::setQuitOnLastWindowClosed(false);
  if (argc != 2) {
    std::fputs("usage: settings_probe SCENARIO\n", stderr);
    return 2;
  }
  Probe probe(argv[1]);
  const test::ProbeLines lines([&probe](const std::string& line) { probe.read(line); });
  return QApplication::exec();
}
