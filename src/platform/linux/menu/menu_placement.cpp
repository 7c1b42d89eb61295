#include "platform/linux/menu/menu_placement.h"

#include <algorithm>

namespace tollvane {
namespace {

constexpr int halfIcon = 12;     // nothing tells where the icon begins
constexpr int widestPanel = 64;  // a click closer than this to the screen's edge is taken to be on a panel

int within(int start, int length, int low, int high) { return std::max(low, std::min(start, high - length)); }

}  // namespace

QPoint menuPosition(const QSize& menu, const QPoint& click, const QRect& screen, const QRect& available) {
  QRect room = available;
  QPoint corner = click - QPoint(halfIcon, halfIcon);
  if (available.contains(click)) {
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
