// The bell with its menu, for tests and pictures: menu_probe ICON_THEME_PATH SCENARIO.
// Obeys commands on its standard input, one a line:
//   open X Y        as if a bar had reported a click there        close
//   claim           owns Tollvane's name on the bus, so that the extension of GNOME Shell shows the menu
//   key             as for a keyboard shortcut
//   submenu         opens the first submenu       grab FILE     a picture of the open menu
//   add APP         adds a sound                  clear         removes all   image SYMBOL
//   repeat N        opens and closes N times      scheme dark|light
//   look            -> "look FAMILY POINTS dark|light" of menus
//   where           -> "menu X Y W H" and "submenu ..." of what is open
//   quit
//   -> "obeyed" after each line, "opened X Y W H", "painted", "closed", and "gone" when the desktop knows that too; at
//   a choice "chosen IDENTIFIER | TOKEN"
#include <QApplication>
#include <QPainter>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>

#include "platform/linux/bell/linux_status_bar.h"
#include "platform/linux/bell/shell_bell.h"
#include "platform/linux/drawing/appearance.h"
#include "platform/linux/menu/menu_widget.h"
#include "platform/linux/menu/rich_menu.h"
#include "tests/probes/menu_scenarios.h"
#include "tests/probes/probe_lines.h"

namespace {

using namespace tollvane;
using test::say;

std::string text(const QRect& rect) {
  std::ostringstream out;
  out << rect.x() << ' ' << rect.y() << ' ' << rect.width() << ' ' << rect.height();
  return out.str();
}

MenuWidget* openMenu(bool below) {
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    auto* menu = qobject_cast<MenuWidget*>(widget);
    if (menu && menu->isVisible() && (qobject_cast<MenuWidget*>(menu->parentWidget()) != nullptr) == below) return menu;
  }
  return nullptr;
}

class Probe : public QObject {
 public:
  Probe(const char* icons, const char* scenario)
      : bar_(icons), item_(bar_.makeStatusItem()), scenario_(scenario, [this](const std::string& chosen) {
          say("chosen " + chosen + " | " + bar_.takeActivationToken());
          if (chosen == "quit") QCoreApplication::quit();
        }) {
    shell_.setMenu(scenario_);
    item_->setMenu(scenario_);
    item_->setImage("bell.fill", "Tollvane");
    item_->setToolTip("Tollvane");
    qApp->installEventFilter(this);
  }

  void read(const std::string& order) {
    std::istringstream line(order);
    obey(line);
    say("obeyed");
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    auto* menu = qobject_cast<MenuWidget*>(watched);
    if (menu && event->type() == QEvent::Show)
      say((openedBelow(*menu) ? "opened-below " : "opened ") + text(menu->geometry()));
    if (menu && event->type() == QEvent::Paint) {
      QMetaObject::invokeMethod(
          this, [] { say("painted"); }, Qt::QueuedConnection);
    }
    if (menu && event->type() == QEvent::Hide && !openedBelow(*menu)) {
      say("closed");
      sayWhenGone(*menu);
    }
    return false;
  }

 private:
  static bool openedBelow(const MenuWidget& menu) { return qobject_cast<MenuWidget*>(menu.parentWidget()) != nullptr; }

  // Says "gone" only when the desktop has removed the menu too: before that it may still send a click to it.
  void sayWhenGone(const MenuWidget& menu) {
    connect(
        &menu, &QObject::destroyed, this,
        [] {
          QGuiApplication::sync();
          say("gone");
        },
        Qt::QueuedConnection);
  }

  void obey(std::istringstream& line) {
    std::string command;
    std::string argument;
    line >> command;
    if (command == "open") {
      int x = 0, y = 0;
      line >> x >> y;
      direct_.toggle({x, y});
    }
    if (command == "claim") {
      QDBusConnection::sessionBus().registerService(QStringLiteral("com.quarnel.tollvane"));
      shell_.setImage("bell.fill", "Tollvane");
    }
    if (command == "look") {
      const QPalette palette = QApplication::palette();
      const bool dark = palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
      say("look " + QApplication::font().family().toStdString() + ' ' +
          std::to_string(QApplication::font().pointSize()) + (dark ? " dark" : " light"));
    }
    if (command == "key") direct_.toggleByKeyboard();
    if (command == "close" && openMenu(false)) openMenu(false)->close();
    if (command == "submenu" && openMenu(false)) openSubmenu(*openMenu(false));
    if (command == "image" && line >> argument) item_->setImage(argument, "Tollvane");
    if (command == "add" && line >> argument) {
      scenario_.addSound(argument, kind::alertSound);
      item_->setToolTip("Last sound: " + argument);
    }
    if (command == "clear") {
      scenario_.clear();
      item_->setToolTip("Tollvane");
    }
    if (command == "grab" && line >> argument && openMenu(false)) grab(argument);
    if (command == "where") {
      if (const MenuWidget* menu = openMenu(false)) say("menu " + text(menu->geometry()));
      if (const MenuWidget* menu = openMenu(true)) say("submenu " + text(menu->geometry()));
    }
    if (command == "scheme" && line >> argument) {
      QApplication::setPalette(
          paletteFor(argument == "dark" ? ColorScheme::dark : ColorScheme::light, QApplication::palette()));
    }
    if (command == "repeat") {
      int times = 0;
      line >> times;
      for (int i = 0; i < times; ++i) openAndClose();
    }
    if (command == "quit") QCoreApplication::quit();
  }

  void openAndClose() {
    direct_.toggle({0, 0});
    QCoreApplication::processEvents();
    if (MenuWidget* menu = openMenu(false)) menu->close();
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  static void openSubmenu(MenuWidget& menu) {
    for (QAction* action : menu.actions())
      if (action->menu()) return menu.setActiveAction(action);
  }

  static void grab(const std::string& file) {
    QPixmap picture = openMenu(false)->grab();
    if (MenuWidget* below = openMenu(true)) {
      const QPixmap other = below->grab();
      const qreal ratio = picture.devicePixelRatio();
      QPixmap both(QSize(picture.width() + other.width(), std::max(picture.height(), other.height())));
      both.setDevicePixelRatio(ratio);
      both.fill(Qt::gray);
      QPainter painter(&both);
      painter.drawPixmap(QPointF(0, 0), picture);
      painter.drawPixmap(QPointF(picture.width() / ratio, 0), other);
      painter.end();
      picture = both;
    }
    picture.save(QString::fromStdString(file));
  }

  LinuxStatusBar bar_;
  std::unique_ptr<StatusItem> item_;
  test::MenuScenario scenario_;
  RichMenu direct_{scenario_};
  ShellBell shell_{QDBusConnection::sessionBus()};
};

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName("Tollvane");
  QApplication::setDesktopFileName("tollvane");
  QApplication::setQuitOnLastWindowClosed(false);
  if (argc != 3) {
    std::fputs("usage: menu_probe ICON_THEME_PATH SCENARIO\n", stderr);
    return 2;
  }
  const Appearance appearance(QDBusConnection::sessionBus());
  Probe probe(argv[1], argv[2]);
  const test::ProbeLines lines([&probe](const std::string& line) { probe.read(line); });
  return application.exec();
}
