#include "platform/linux/menu/rich_menu.h"

#include <qpa/qplatformnativeinterface.h>
#include <QApplication>
#include <QCursor>
#include <QScreen>
#include <cstdint>
#include <utility>

#include "platform/linux/menu/layer_menu.h"
#include "platform/linux/menu/layer_shell.h"
#include "platform/linux/menu/menu_placement.h"

namespace tollvane {
namespace {

constexpr int kSamePlace = 64;  // a pointer this near to the reported click has made it

// Bars count in their own pixels, which are not always ours: the pointer knows better, where it was the one to click.
QPoint clickPoint(QPoint reported) {
  const QPoint pointer = QCursor::pos();
  if (reported.isNull()) return pointer;
  const QPoint scaled = reported / qGuiApp->devicePixelRatio();
  const auto near = [&](QPoint point) { return (point - pointer).manhattanLength() <= kSamePlace; };
  return near(reported) || near(scaled) ? pointer : scaled;
}

// The X server's time of the user's last key or click; 0 on other systems.
std::uint32_t lastUserTime() {
  QPlatformNativeInterface* native = QGuiApplication::platformNativeInterface();
  if (native == nullptr || QGuiApplication::platformName() != QLatin1String("xcb")) return 0;
  const auto time = reinterpret_cast<std::uintptr_t>(
      native->nativeResourceForScreen("appusertime", QGuiApplication::primaryScreen()));
  return static_cast<std::uint32_t>(time);
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
  if (!widget.isNull() && widget->isVisible())
    widget->close();
  else
    closed();
}

void RichMenu::build() {
  delete widget_.data();
  auto menu = std::make_shared<Menu>();
  delegate_.menuNeedsUpdate(*menu);
  widget_ = new MenuWidget(std::move(menu));
  connect(widget_, &QMenu::triggered, this, &RichMenu::choose);
  connect(widget_, &QMenu::aboutToHide, this, &RichMenu::closed);
}

// A choice is told right after this, and still needs both.
void RichMenu::closed() {
  if (!widget_.isNull()) widget_->deleteLater();
  closing_ = layers_.release();
  if (!closing_.isNull()) closing_->deleteLater();
}

void RichMenu::openOnWayland(QPoint click) {
  layers_ = std::make_unique<LayerMenu>(*LayerShell::ofThisDesktop(), *widget_, click);
  if (!layers_->isCovering()) closed();
}

RichMenuChoice RichMenu::choiceNow() {
  return {.activationToken = closing_.isNull() ? std::string() : closing_->activationToken(),
          .timestamp = lastUserTime()};
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
  // A copy: the widget and its tree may be gone by then.
  QMetaObject::invokeMethod(
      this,
      [this, item = entry->item(), made = choiceNow()] {
        if (onChoice) onChoice(made);
        item.action(item);
      },
      Qt::QueuedConnection);
}

}  // namespace tollvane
