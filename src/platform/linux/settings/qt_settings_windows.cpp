#include "platform/linux/settings/qt_settings_windows.h"

#include <QCursor>
#include <QGuiApplication>
#include <QIcon>
#include <QScreen>
#include <algorithm>
#include <utility>

#include "platform/linux/settings/settings_look.h"
#include "platform/linux/settings/settings_page.h"
#include "platform/linux/status/symbols.h"

namespace tollvane {
namespace {

QIcon windowIcon(const QWidget& window) {
  const QColor ink = SettingsLook(window.palette(), window.font()).color(ui::Color::accent);
  QIcon bell;
  for (const int size : {16, 32, 48, 64}) bell.addPixmap(QPixmap::fromImage(drawSymbol("bell.fill", size, ink)));
  return QIcon::fromTheme(QStringLiteral("tollvane"), bell);
}

// A window that is higher than the screen keeps its title bar on it.
QPoint centred(const QWidget& window) {
  const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  if (screen == nullptr) return {};
  const QRect room = screen->availableGeometry();
  const QPoint corner = room.center() - window.rect().center();
  return {std::max(corner.x(), room.left()), std::max(corner.y(), room.top())};
}

class QtSettingsWindow : public SettingsWindow {
 public:
  QtSettingsWindow(const Style& style, std::function<void(QWidget&)> bringForward)
      : bringForward_(std::move(bringForward)) {
    page_.setWindowTitle(QString::fromStdString(style.title));
    page_.setWindowIcon(windowIcon(page_));
    page_.setFixedSize(qRound(style.width), qRound(style.height));
  }

  void setContent(const ui::SettingsContent& content) override { page_.setContent(content); }

  void makeKeyAndOrderFront() override {
    if (!std::exchange(placed_, true)) page_.move(centred(page_));
    page_.setWindowState(page_.windowState() & ~Qt::WindowMinimized);
    page_.show();
    if (bringForward_) return bringForward_(page_);
    page_.raise();
    page_.activateWindow();
  }

 private:
  std::function<void(QWidget&)> bringForward_;
  SettingsPage page_;
  bool placed_ = false;
};

}  // namespace

QtSettingsWindows::QtSettingsWindows(std::function<void(QWidget&)> bringForward)
    : bringForward_(std::move(bringForward)) {}

std::unique_ptr<SettingsWindow> QtSettingsWindows::make(const SettingsWindow::Style& style) {
  return std::make_unique<QtSettingsWindow>(style, bringForward_);
}

}  // namespace tollvane
