#include "platform/linux/menu/rich_menu.h"

#include <QApplication>
#include <QCursor>
#include <QScreen>
#include <utility>

#include "platform/linux/menu/layer_menu.h"
#include "platform/linux/menu/layer_shell.h"
#include "platform/linux/menu/menu_placement.h"

namespace tollvane {
namespace {

constexpr int samePlace = 64;  // in pixels; a pointer this near to the reported click has made it

// Bars report clicks in their own pixels, which are not always ours. If the pointer has made the click, its position is
// exact.
QPoint clickPoint(QPoint reported) {
  const QPoint pointer = QCursor::pos();
  if (reported.isNull()) return pointer;
  const QPoint scaled = reported / qGuiApp->devicePixelRatio();
  const auto near = [&](QPoint point) { return (point - pointer).manhattanLength() <= samePlace; };
  return near(reported) || near(scaled) ? pointer : scaled;
}

bool onWayland() { return QGuiApplication::platformName().startsWith(QLatin1String("wayland")); }

}  // namespace

RichMenu::RichMenu(MenuDelegate& delegate) : delegate_(delegate) {}

RichMenu::~RichMenu() {
  layers_.reset();
  delete widget_.data();
}

bool RichMenu::isPossible() { return !onWayland() || LayerShell::ofThisDesktop() != nullptr; }

bool RichMenu::isOpening() const { return layers_ != nullptr; }

void RichMenu::toggle(QPoint click) {
  if (isOpen()) return close();
  if (!isPossible()) return;
  build();
  onWayland() ? openOnWayland(click) : openOnX11(click);
}

void RichMenu::close() {
  const QPointer<MenuWidget> widget = widget_;
  if (!widget.isNull() && widget->isVisible()) {
    widget->close();
  } else {
    closed();
  }
}

void RichMenu::build() {
  delete widget_.data();
  auto menu = std::make_shared<Menu>();
  delegate_.menuNeedsUpdate(*menu);
  widget_ = new MenuWidget(std::move(menu));
  connect(widget_, &QMenu::triggered, this, &RichMenu::choose);
  connect(widget_, &QMenu::aboutToHide, this, &RichMenu::closed);
}

// Both are destroyed later, because a choice is reported right after this and still needs them.
void RichMenu::closed() {
  if (!widget_.isNull()) widget_->deleteLater();
  closing_ = layers_.release();
  if (!closing_.isNull()) closing_->deleteLater();
}

void RichMenu::openOnWayland(QPoint click) {
  layers_ = std::make_unique<LayerMenu>(*LayerShell::ofThisDesktop(), *widget_, click);
  if (!layers_->isCovering()) closed();
}

void RichMenu::openOnX11(QPoint click) {
  const QPoint point = clickPoint(click);
  const QScreen* screen = QGuiApplication::screenAt(point);
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  widget_->popup(menuPosition(widget_->sizeHint(), point, screen->geometry(), screen->availableGeometry()));
}

void RichMenu::choose(QAction* action) {
  const auto* entry = dynamic_cast<const MenuEntry*>(action);
  if (entry == nullptr || !entry->item().action) return;
  // A copy, because the widget and its items may be gone by then.
  QMetaObject::invokeMethod(
      this,
      [this, item = entry->item(), token = closing_.isNull() ? std::string() : closing_->activationToken()] {
        if (onChoice) onChoice(token);
        item.action(item);
      },
      Qt::QueuedConnection);
}

}  // namespace tollvane
