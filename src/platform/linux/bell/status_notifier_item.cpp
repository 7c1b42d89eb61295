#include "platform/linux/bell/status_notifier_item.h"

#include <utility>

namespace tollvane {

StatusNotifierItem::StatusNotifierItem(QString iconThemePath,
                                       std::function<void(const StatusItemActivation&)> onActivate)
    : iconThemePath_(std::move(iconThemePath)), onActivate_(std::move(onActivate)) {
  registerBusTypes();
}

void StatusNotifierItem::setIcon(const QString& iconName, const QString& accessibleDescription) {
  if (iconName == iconName_ && accessibleDescription == accessibleDescription_) return;
  if (iconName != iconName_) pixmaps_.reset();
  iconName_ = iconName;
  accessibleDescription_ = accessibleDescription;
  Q_EMIT NewIcon();
}

void StatusNotifierItem::setToolTipTitle(const QString& title) {
  if (title == toolTipTitle_) return;
  toolTipTitle_ = title;
  Q_EMIT NewToolTip();
}

void StatusNotifierItem::setTone(BarTone tone) {
  if (tone == tone_) return;
  tone_ = tone;
  pixmaps_.reset();
  if (!iconName_.isEmpty()) Q_EMIT NewIcon();
}

void StatusNotifierItem::setIconIsNamed(bool isNamed) {
  if (isNamed == std::exchange(iconIsNamed_, isNamed)) return;
  if (!iconName_.isEmpty()) Q_EMIT NewIcon();
}

void StatusNotifierItem::setMenu(const QString& path, bool itemIsMenu) {
  menuPath_ = path;
  itemIsMenu_ = itemIsMenu;
  Q_EMIT NewMenu();
}

IconPixmaps StatusNotifierItem::iconPixmap() const {
  if (!pixmaps_) pixmaps_ = iconPixmaps(drawIcon(iconName_, tone_));
  return *pixmaps_;
}

tollvane::ToolTip StatusNotifierItem::toolTip() const {
  // There is never a subtitle, because some hosts read it as markup.
  return {QString(), {}, toolTipTitle_, QString()};
}

void StatusNotifierItem::Activate(int x, int y) {
  // The token is good for one click: a later click without one must not use it again.
  const StatusItemActivation activation{x, y, takeActivationToken()};
  if (onActivate_) onActivate_(activation);
}

void StatusNotifierItem::SecondaryActivate(int, int) { activationToken_.clear(); }

void StatusNotifierItem::ContextMenu(int, int) { activationToken_.clear(); }

void StatusNotifierItem::Scroll(int, const QString&) {}

void StatusNotifierItem::ProvideXdgActivationToken(const QString& token) { activationToken_ = token; }

}  // namespace tollvane
