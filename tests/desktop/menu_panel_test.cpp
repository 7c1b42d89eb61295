// The menu in a real panel, opened with a real pointer and used with real keys.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <optional>

#include "tests/desktop/menu_fixture.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

class MenuPanelTest : public SharedSession<PrivateDesktop> {
 protected:
  MenuPanelTest() : SharedSession(PrivateDesktop::Options{}) {}

  void start(const std::string& scenario) {
    bell_.emplace(desktop_, scenario);
    bell_->tell("image bell");
    ASSERT_TRUE(
        waitUntil([&] { return desktop_.registeredItems().find(bell_->service().toStdString()) != std::string::npos; },
                  desktopPatience));
    // The panel shows the icon a moment after it has accepted the registration.
    ASSERT_TRUE(waitUntil([&] { return desktop_.showsIcon(); }, desktopPatience));
  }

  void run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "xdotool");
    ASSERT_TRUE(desktop_.run(arguments));
  }
  void clickAt(int x, int y) { desktop_.clickAt(x, y); }
  void key(const std::string& name) { run({"key", name}); }

  void clickBell() { clickAt(786, 14); }
  void open() {
    clickBell();
    ASSERT_TRUE(bell_->prints("opened "));
  }

  PrivateDesktop& desktop_ = session;
  std::optional<MenuBell> bell_;
};

TEST_F(MenuPanelTest, AClickOpensTheWholeMenuOnTheScreenUnderThePanel) {
  start("hostile");
  open();
  const QRect place = bell_->place();
  EXPECT_TRUE(QRect(0, 0, 800, 480).contains(place)) << place.x() << ' ' << place.y() << ' ' << place.width();
  EXPECT_GE(place.y(), 20) << "the menu covers the panel";
  EXPECT_LE(place.y(), 40) << "the menu is away from the panel";
}

TEST_F(MenuPanelTest, AClickOnAnEntryChoosesItAndClosesTheMenu) {
  start("five");
  open();
  const QRect place = bell_->place();
  clickAt(place.x() + 40, place.bottom() - 15);
  EXPECT_TRUE(bell_->prints("chosen quit"));
  EXPECT_TRUE(bell_->prints("closed\n"));
}

// A click on the bell that closes the menu must not open it again.
TEST_F(MenuPanelTest, EverySecondClickOnTheBellClosesAndEveryOtherOpensAgain) {
  start("five");
  for (int times = 1; times <= 5; ++times) {
    clickBell();
    ASSERT_TRUE(bell_->prints("opened ", times));
    clickBell();
    ASSERT_TRUE(bell_->prints("gone\n", times));
    bell_->tell("where");
    EXPECT_EQ(bell_->count("\nmenu "), 0);
    EXPECT_EQ(bell_->count("opened "), times);
  }
}

TEST_F(MenuPanelTest, AClickOutsideAndEscapeCloseIt) {
  start("five");
  open();
  clickAt(20, 460);
  ASSERT_TRUE(bell_->prints("gone\n"));
  clickBell();
  ASSERT_TRUE(bell_->prints("opened ", 2));
  key("Escape");
  EXPECT_TRUE(bell_->prints("closed\n", 2));
  EXPECT_EQ(bell_->count("chosen"), 0);
}

TEST_F(MenuPanelTest, AChoiceByKeyCarriesTheTimeOfTheKey) {
  start("five");
  open();
  key("Down");
  key("Return");
  ASSERT_TRUE(bell_->prints("chosen sound "));
  EXPECT_EQ(bell_->count("Mail |  0\n"), 0) << "without a time";
}

TEST_F(MenuPanelTest, KeyEquivalentsWork) {
  start("five");
  open();
  key("ctrl+h");
  EXPECT_TRUE(bell_->prints("chosen openHistory"));
}

TEST_F(MenuPanelTest, AKeyOpensTheSubmenuOnTheScreen) {
  start("fifty");
  open();
  key("o");  // only one command or name begins with this letter, and it opens a submenu
  key("Right");
  ASSERT_TRUE(bell_->prints("opened-below "));
  EXPECT_TRUE(QRect(0, 0, 800, 480).contains(bell_->place("\nopened-below ")));
}

TEST_F(MenuPanelTest, TheRightButtonShowsThePanelsOwnDrawingOfTheMenu) {
  start("five");
  open();
  key("Escape");
  ASSERT_TRUE(bell_->prints("gone\n"));
  run({"mousemove", "786", "14", "click", "3"});
  // Choose the first item that can be chosen.
  ASSERT_TRUE(waitUntil(
      [&] {
        key("Down");
        key("Return");
        return waitUntil([&] { return bell_->count("chosen ") > 0; }, std::chrono::seconds(1));
      },
      desktopPatience));
}

}  // namespace
}  // namespace tollvane::test
