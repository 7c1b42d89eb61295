#include "platform/linux/menu/menu_placement.h"

#include <algorithm>

namespace tollvane {
namespace {

constexpr int halfIcon = 12;     // nothing tells where the icon begins
constexpr int widestPanel = 64;  // a click closer than this to the screen's edge is taken to be on a panel

int within(int start, int length, int low, int high) { return std::max(low, std::min(start, high - length)); }

// A panel is long and thin. What covers more than half of the screen is something else.
bool isThin(const QRect& panel, const QRect& screen) {
  return panel.width() >= panel.height() ? panel.height() <= screen.height() / 2 : panel.width() <= screen.width() / 2;
}

// The part of `available` on the panel's inner side.
QRect beside(const QRect& panel, const QRect& screen, QRect available) {
  const bool lies = panel.width() >= panel.height();
  if (lies && panel.center().y() < screen.center().y()) {
    available.setTop(std::max(available.top(), panel.bottom() + 1));
  } else if (lies) {
    available.setBottom(std::min(available.bottom(), panel.top() - 1));
  } else if (panel.center().x() < screen.center().x()) {
    available.setLeft(std::max(available.left(), panel.right() + 1));
  } else {
    available.setRight(std::min(available.right(), panel.left() - 1));
  }
  return available;
}

}  // namespace

QPoint menuPosition(const QSize& menu, const QPoint& click, const QRect& screen, const QRect& available,
                    const QRect& panel) {
  QRect room = available;
  QPoint corner = click - QPoint(halfIcon, halfIcon);
  const QRect shown = panel & screen;
  if (!shown.isEmpty() && isThin(shown, screen)) {
    room = beside(shown, screen, available);
  } else if (available.contains(click)) {
    // The panel hides or reserves no room: the menu goes beside the icon, away from the edge.
    const int above = click.y() - screen.top();
    const int below = screen.bottom() - click.y();
    const int before = click.x() - screen.left();
    const int behind = screen.right() - click.x();
    const int nearest = std::min({above, below, before, behind});
    if (nearest > widestPanel) {
      corner = click;
    } else if (nearest == above) {
      room.setTop(click.y() + halfIcon);
    } else if (nearest == below) {
      room.setBottom(click.y() - halfIcon - 1);
    } else if (nearest == before) {
      room.setLeft(click.x() + halfIcon);
    } else {
      room.setRight(click.x() - halfIcon - 1);
    }
  }
  if (menu.width() > room.width()) room = QRect(screen.x(), room.y(), screen.width(), room.height());
  if (menu.height() > room.height()) room = QRect(room.x(), screen.y(), room.width(), screen.height());
  return {within(corner.x(), menu.width(), room.left(), room.right() + 1),
          within(corner.y(), menu.height(), room.top(), room.bottom() + 1)};
}

}  // namespace tollvane
