#include "platform/linux/menu/layer_menu.h"

#include <qpa/qplatformnativeinterface.h>

#include <QEnterEvent>
#include <QGuiApplication>
#include <QScreen>
#include <chrono>

#include "platform/linux/menu/menu_placement.h"

namespace tollvane {
namespace {

// The compositor reports at once where the pointer is. A desktop with only a touch screen has no pointer.
constexpr std::chrono::milliseconds pointerIsKnown{150};

}  // namespace

LayerMenu::LayerMenu(LayerShell& shell, MenuWidget& menu, QPoint click, bool atPointer)
    : shell_(shell),
      menu_(&menu),
      click_(click),
      atPointer_(atPointer),
      overlay_(nullptr, Qt::Window | LayerShell::flags) {
  follow(menu);
  noPointer_.setSingleShot(true);
  noPointer_.setInterval(pointerIsKnown);
  connect(&noPointer_, &QTimer::timeout, this,
          [this] { open(atPointer_ ? click_ + overlay_.geometry().topLeft() : overlay_.geometry().topRight()); });
  cover();
}

LayerMenu::~LayerMenu() {
  if (!menu_.isNull()) menu_->hide();
  places_.clear();
  covering_.reset();
}

void LayerMenu::cover() {
  overlay_.setAttribute(Qt::WA_TranslucentBackground);
  overlay_.setMouseTracking(true);
  overlay_.installEventFilter(this);
  overlay_.winId();
  covering_ = shell_.cover(*overlay_.windowHandle());
  if (!covering_) return;
  overlay_.setGeometry(QRect(overlay_.screen()->geometry().topLeft(), covering_->size()));
  overlay_.show();
  noPointer_.start();
}

void LayerMenu::open(QPoint at) {
  noPointer_.stop();
  if (menu_.isNull() || menu_->isVisible()) return;
  menu_->popup(menuPosition(menu_->sizeHint(), at, overlay_.geometry(), withoutPanels(overlay_.geometry(), at)));
}

// The compositor reports only the size of the rest. The click was on the panel, so it tells where the panel is.
QRect LayerMenu::withoutPanels(const QRect& output, QPoint click) const {
  const auto size = shell_.sizeWithoutPanels(this->output());
  if (!size) return output;
  QRect room = output;
  const int high = output.height() - size->height();
  const int wide = output.width() - size->width();
  if (high > 0 && click.y() < output.top() + high) {
    room.setTop(output.top() + high);
  } else if (high > 0 && click.y() > output.bottom() - high) {
    room.setBottom(output.bottom() - high);
  } else if (wide > 0 && click.x() < output.left() + wide) {
    room.setLeft(output.left() + wide);
  } else if (wide > 0 && click.x() > output.right() - wide) {
    room.setRight(output.right() - wide);
  }
  return room;
}

wl_output* LayerMenu::output() const {
  return static_cast<wl_output*>(
      QGuiApplication::platformNativeInterface()->nativeResourceForScreen("output", overlay_.screen()));
}

void LayerMenu::follow(MenuWidget& menu) {
  menu.setWindowFlags(menu.windowFlags() | LayerShell::flags);
  menu.installEventFilter(this);
  // A surface must be destroyed before its window is hidden.
  connect(&menu, &MenuWidget::vanishing, this, [this, &menu] { places_.erase(&menu); });
  for (MenuWidget* submenu : menu.submenus()) follow(*submenu);
}

void LayerMenu::show(MenuWidget& menu) {
  menu.winId();
  places_[&menu] = shell_.place(*menu.windowHandle(), menu.geometry().topLeft() - overlay_.geometry().topLeft(),
                                menu.size(), output());
}

bool LayerMenu::eventFilter(QObject* watched, QEvent* event) {
  if (watched == &overlay_ && event->type() == QEvent::Enter && atPointer_) {
    const QPoint local = static_cast<QEnterEvent*>(event)->position().toPoint();
    // Queued, so as not to run within the toolkit's own handling of the pointer.
    QMetaObject::invokeMethod(
        this, [this, local] { open(overlay_.geometry().topLeft() + local); }, Qt::QueuedConnection);
  }
  auto* menu = qobject_cast<MenuWidget*>(watched);
  if (menu != nullptr && event->type() == QEvent::Show) show(*menu);
  return false;
}

std::string LayerMenu::activationToken() { return shell_.activationToken(*overlay_.windowHandle()); }

}  // namespace tollvane
