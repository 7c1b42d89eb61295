// The place of the menu on two monitors side by side, with panels that reserve no room for themselves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <optional>

#include "tests/desktop/menu_fixture.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

constexpr QRect left(0, 0, 800, 600);
constexpr QRect right(800, 0, 800, 600);

class MenuMonitorsTest : public SharedSession<PrivateDesktop> {
 protected:
  MenuMonitorsTest() : SharedSession(PrivateDesktop::Options{.panel = false, .size = "1600x600"}) {
    session.run({"xrandr", "--setmonitor", "LEFT", "800/200x600/150+0+0", "screen"});
    session.run({"xrandr", "--setmonitor", "RIGHT", "800/200x600/150+800+0", "none"});
    bell_.emplace(session, "five");
    probe_ = session.start({TOLLVANE_PROBES "/desktop_probe"});
    EXPECT_EQ(probe_->line(desktopPatience), "ready");
  }

  void showPanel(const QRect& place) {
    std::ostringstream order;
    order << "panel " << place.x() << ' ' << place.y() << ' ' << place.width() << ' ' << place.height();
    probe_->writeLine(order.str());
    ASSERT_EQ(probe_->line(desktopPatience), "shown");
  }
  // Where the menu is after a click on the panel's middle, as a bar reports it.
  QRect menuAfterClickAt(QPoint place) {
    session.run({"xdotool", "mousemove", std::to_string(place.x()), std::to_string(place.y())});
    bell_->tell("open " + std::to_string(place.x()) + ' ' + std::to_string(place.y()));
    EXPECT_TRUE(bell_->prints("opened "));
    return bell_->place();
  }

  std::optional<MenuBell> bell_;
  std::unique_ptr<Process> probe_;
};

TEST_F(MenuMonitorsTest, StandsBelowAPanelAtTheTopOfTheSecondMonitor) {
  showPanel({800, 0, 800, 44});
  const QRect menu = menuAfterClickAt({1500, 10});
  EXPECT_TRUE(right.contains(menu)) << menu.x() << ' ' << menu.width();
  EXPECT_EQ(menu.top(), 44);
}

TEST_F(MenuMonitorsTest, StandsAboveAPanelAtTheBottomOfTheFirstMonitor) {
  showPanel({0, 552, 800, 48});
  const QRect menu = menuAfterClickAt({700, 560});
  EXPECT_TRUE(left.contains(menu)) << menu.x() << ' ' << menu.width();
  EXPECT_EQ(menu.bottom() + 1, 552);
}

TEST_F(MenuMonitorsTest, StandsBesideAPanelBetweenTheMonitors) {
  showPanel({800, 0, 60, 600});
  const QRect menu = menuAfterClickAt({830, 300});
  EXPECT_TRUE(right.contains(menu));
  EXPECT_EQ(menu.left(), 860);
}

TEST_F(MenuMonitorsTest, AKeyOpensItOnTheMonitorWithThePointer) {
  session.run({"xdotool", "mousemove", "1200", "300"});
  bell_->tell("key");
  ASSERT_TRUE(bell_->prints("opened "));
  const QRect menu = bell_->place();
  EXPECT_TRUE(right.contains(menu));
  EXPECT_GE(menu.right(), right.right() - 2);
  session.run({"xdotool", "key", "Return"});
  EXPECT_TRUE(bell_->prints("chosen ")) << "the first sound has the keyboard";
}

}  // namespace
}  // namespace tollvane::test
