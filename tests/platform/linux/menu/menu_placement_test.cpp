#include "platform/linux/menu/menu_placement.h"

#include <gtest/gtest.h>

#include <QRect>

namespace tollvane::test {
namespace {

constexpr QRect screen(0, 0, 1000, 700);

TEST(MenuPlacement, StandsAlongThePanelBesideTheIcon) {
  const QSize menu(300, 400);
  EXPECT_EQ(menuPosition(menu, {500, 10}, screen, screen.adjusted(0, 26, 0, 0)), QPoint(488, 26));
  EXPECT_EQ(menuPosition(menu, {500, 690}, screen, screen.adjusted(0, 0, 0, -26)), QPoint(488, 274));
  EXPECT_EQ(menuPosition(menu, {10, 200}, screen, screen.adjusted(26, 0, 0, 0)), QPoint(26, 188));
  EXPECT_EQ(menuPosition(menu, {990, 200}, screen, screen.adjusted(0, 0, -26, 0)), QPoint(674, 188));
}

TEST(MenuPlacement, StandsBesideAPanelThatReservesNoRoom) {
  const QSize menu(300, 400);
  EXPECT_EQ(menuPosition(menu, {500, 10}, screen, screen, {0, 0, 1000, 48}), QPoint(488, 48));
  EXPECT_EQ(menuPosition(menu, {500, 690}, screen, screen, {0, 652, 1000, 48}), QPoint(488, 252));
  EXPECT_EQ(menuPosition(menu, {10, 200}, screen, screen, {0, 0, 40, 700}), QPoint(40, 188));
  EXPECT_EQ(menuPosition(menu, {990, 200}, screen, screen, {960, 0, 40, 700}), QPoint(660, 188));
}

TEST(MenuPlacement, APanelOfOneScreenIsNotOnAnother) {
  const QRect second(1000, 0, 800, 600);
  EXPECT_EQ(menuPosition({300, 400}, {1700, 8}, second, second, {1000, 0, 800, 30}), QPoint(1500, 30));
  EXPECT_EQ(menuPosition({300, 400}, {1700, 8}, second, second, {0, 0, 1000, 48}), QPoint(1500, 20));
}

TEST(MenuPlacement, AWindowOverHalfOfTheScreenIsNoPanel) {
  EXPECT_EQ(menuPosition({300, 400}, {500, 10}, screen, screen.adjusted(0, 26, 0, 0), screen), QPoint(488, 26));
}

TEST(MenuPlacement, IsWhollyOnTheScreenWhereverTheClickWas) {
  const QRect rooms[] = {screen, screen.adjusted(0, 26, 0, 0), screen.adjusted(0, 0, -40, -26)};
  for (const QRect& room : rooms) {
    for (int x = -50; x < 1100; x += 50) {
      for (int y = -50; y < 800; y += 50) {
        EXPECT_TRUE(screen.contains(QRect(menuPosition({300, 400}, {x, y}, screen, room), QSize(300, 400))))
            << x << ' ' << y;
      }
    }
  }
}

TEST(MenuPlacement, AMenuThatIsTooLargeShowsItsBeginning) {
  EXPECT_EQ(menuPosition({2000, 2000}, {990, 10}, screen, screen.adjusted(0, 26, 0, 0)), QPoint(0, 0));
}

}  // namespace
}  // namespace tollvane::test
