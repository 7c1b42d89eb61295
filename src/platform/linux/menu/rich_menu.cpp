#include "platform/linux/menu/rich_menu.h"

#include <QApplication>
#include <QCursor>
#include <QScreen>
#include <QTimer>
#include <QWindow>
#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/linux/menu/layer_menu.h"
#include "platform/linux/menu/layer_shell.h"
#include "platform/linux/menu/menu_placement.h"
#include "platform/linux/x11/x11_panel.h"

namespace tollvane {
namespace {

constexpr int keyboardAttempts = 60;
constexpr std::chrono::milliseconds betweenAttempts{50};

constexpr int samePlace = 64;  // in pixels; a pointer this near to the reported click has made it

// The toolkit keeps a screen's corner where it is in device pixels, and divides lengths by the screen's ratio.
struct DevicePixels {
  explicit DevicePixels(const QScreen& screen)
      : corner(screen.geometry().topLeft()),
        ratio(screen.devicePixelRatio()),
        area(corner, (QSizeF(screen.geometry().size()) * ratio).toSize()) {}

  QPoint fromDevice(QPoint point) const { return corner + (QPointF(point - corner) / ratio).toPoint(); }
  QPoint toDevice(QPoint point) const { return corner + (QPointF(point - corner) * ratio).toPoint(); }

  QPoint corner;
  qreal ratio;
  QRect area;
};

QPoint fromDevicePixels(QPoint point) {
  for (const QScreen* screen : QGuiApplication::screens()) {
    const DevicePixels pixels(*screen);
    if (pixels.area.contains(point)) return pixels.fromDevice(point);
  }
  return point;
}

// Bars report clicks in their own pixels, which are not always ours. If the pointer has made the click, its position is
// exact.
QPoint clickPoint(QPoint reported) {
  const QPoint pointer = QCursor::pos();
  if (reported.isNull()) return pointer;
  const QPoint ours = fromDevicePixels(reported);
  const auto near = [&](QPoint point) { return (point - pointer).manhattanLength() <= samePlace; };
  return near(reported) || near(ours) ? pointer : ours;
}

// The panel that was clicked on; empty if it is not known. Nobody but the panel itself knows of one that hides, or that
// reserves no room.
QRect panelUnder(QPoint point, const QScreen& screen) {
  const DevicePixels pixels(screen);
  const QPoint place = pixels.toDevice(point);
  const auto panel = panelAt(place.x(), place.y());
  if (!panel) return {};
  return {pixels.fromDevice({panel->x, panel->y}),
          pixels.fromDevice({panel->x + panel->width - 1, panel->y + panel->height - 1})};
}

// The end of the panel of the screen on which the user is; 0, 0 is its corner. Most panels are at the top, and a
// reserved bottom tells of one that is not.
QPoint endOfPanel() {
  const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  const QRect whole = screen->geometry();
  const QRect rest = screen->availableGeometry();
  const bool isAtBottom = rest.bottom() < whole.bottom() && rest.top() == whole.top();
  return isAtBottom ? whole.bottomRight() : whole.topRight();
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
  onWayland() ? openOnWayland(click, true) : openOnX11(clickPoint(click));
}

void RichMenu::toggleByKeyboard() {
  if (isOpen()) return close();
  if (!isPossible()) return;
  build();
  chooseFirst();
  if (onWayland()) return openOnWayland({}, false);
  openOnX11(endOfPanel());
  takeKeyboard(keyboardAttempts);
}

void RichMenu::chooseFirst() {
  const auto& entries = widget_->entries();
  const auto first = std::find_if(entries.begin(), entries.end(),
                                  [](const MenuEntry* entry) { return entry->isEnabled() && !entry->isSeparator(); });
  if (first != entries.end()) widget_->setActiveAction(*first);
}

// The program whose shortcut has asked for the menu holds the keyboard until the key is released.
void RichMenu::takeKeyboard(int attempts) {
  if (attempts == 0 || widget_.isNull() || !widget_->isVisible()) return;
  if (widget_->windowHandle()->setKeyboardGrabEnabled(true)) return;
  QTimer::singleShot(betweenAttempts, widget_, [this, attempts] { takeKeyboard(attempts - 1); });
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

void RichMenu::openOnWayland(QPoint click, bool atPointer) {
  layers_ = std::make_unique<LayerMenu>(*LayerShell::ofThisDesktop(), *widget_, click, atPointer);
  if (!layers_->isCovering()) closed();
}

void RichMenu::openOnX11(QPoint point) {
  const QScreen* screen = QGuiApplication::screenAt(point);
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  widget_->popup(menuPosition(widget_->sizeHint(), point, screen->geometry(), screen->availableGeometry(),
                              panelUnder(point, *screen)));
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
