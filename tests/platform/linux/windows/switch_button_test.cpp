#include "platform/linux/windows/switch_button.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <vector>

#include "platform/linux/menu/menu_style.h"

namespace tollvane {
namespace {

class SwitchTest : public testing::Test {
 protected:
  SwitchTest() : look(QApplication::palette(), QApplication::font()), button(nullptr) {
    show(false);
    button.dress(look);
    button.resize(400, button.heightForWidth(400));
    button.show();
  }

  void show(bool on, const std::string& title = "Start at login") {
    button.setValue(
        {"login", title, ui::Toggle::Style::switchControl, on, [this](bool wish) { wishes.push_back(wish); }});
  }
  void click(QPoint at) {
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      QMouseEvent event(type, at, button.mapToGlobal(at), Qt::LeftButton,
                        type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
      QApplication::sendEvent(&button, &event);
    }
  }
  void press(int key) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
      QKeyEvent event(type, key, Qt::NoModifier);
      QApplication::sendEvent(&button, &event);
    }
  }
  QAccessibleInterface& accessible() { return *QAccessible::queryAccessibleInterface(&button); }

  // How many pixels of the picture's left and right half have the colour of the rail.
  std::pair<int, int> railPixels() {
    const QImage image = button.grab().toImage();
    int left = 0, right = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, y) == look.rail(true)) ++(x < image.width() / 2 ? left : right);
      }
    }
    return {left, right};
  }

  SettingsLook look;
  std::vector<bool> wishes;
  SwitchButton button;
};

TEST_F(SwitchTest, AClickAnywhereInTheRowIsOneWish) {
  click({3, 5});
  EXPECT_EQ(wishes, std::vector<bool>{true});
  EXPECT_TRUE(button.isChecked());
  click({390, 5});
  EXPECT_EQ(wishes, (std::vector<bool>{true, false}));
}

TEST_F(SwitchTest, TheSpaceBarTurnsIt) {
  press(Qt::Key_Space);
  EXPECT_EQ(wishes, std::vector<bool>{true});
}

TEST_F(SwitchTest, AChangeByItsOwnerIsNoWish) {
  show(true);
  show(false);
  show(true);
  EXPECT_TRUE(button.isChecked());
  EXPECT_TRUE(wishes.empty());
}

TEST_F(SwitchTest, ARefusedWishSpringsBackWithoutAnotherWish) {
  click({3, 5});
  show(false);
  EXPECT_FALSE(button.isChecked());
  EXPECT_EQ(wishes, std::vector<bool>{true});
}

TEST_F(SwitchTest, ADisabledSwitchIgnoresClicksAndKeys) {
  button.setEnabled(false);
  click({3, 5});
  press(Qt::Key_Space);
  EXPECT_TRUE(wishes.empty());
  EXPECT_TRUE(accessible().state().disabled);
}

TEST_F(SwitchTest, IsACheckBoxToAccessibilityTools) {
  EXPECT_EQ(accessible().role(), QAccessible::CheckBox);
  EXPECT_EQ(accessible().text(QAccessible::Name).toStdString(), "Start at login");
  EXPECT_TRUE(accessible().state().checkable);
  EXPECT_TRUE(accessible().state().focusable);
  EXPECT_FALSE(accessible().state().checked);
  show(true);
  EXPECT_TRUE(accessible().state().checked);
}

TEST_F(SwitchTest, AccessibilityToolsMayTurnIt) {
  ASSERT_TRUE(accessible().actionInterface()->actionNames().contains(QAccessibleActionInterface::toggleAction()));
  accessible().actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
  EXPECT_EQ(wishes, std::vector<bool>{true});
}

TEST_F(SwitchTest, ItsRailIsAtTheTrailingEdge) {
  show(true);
  QApplication::processEvents();
  const auto [left, right] = railPixels();
  EXPECT_EQ(left, 0);
  EXPECT_GT(right, 100);
  button.setLayoutDirection(Qt::RightToLeft);
  const auto [leftNow, rightNow] = railPixels();
  EXPECT_GT(leftNow, 100);
  EXPECT_EQ(rightNow, 0);
}

TEST_F(SwitchTest, TheFocusRingIsShownForTheKeyboardOnly) {
  button.activateWindow();
  QApplication::processEvents();
  button.setFocus(Qt::TabFocusReason);
  button.window()->setAttribute(Qt::WA_KeyboardFocusChange, false);
  const QImage without = button.grab().toImage();
  button.window()->setAttribute(Qt::WA_KeyboardFocusChange, true);
  EXPECT_NE(button.grab().toImage(), without);
}

TEST_F(SwitchTest, ALongTitleTakesAsManyLinesAsItNeeds) {
  const int oneLine = button.heightForWidth(400);
  show(false,
       "Start this program whenever somebody logs in at this computer, be it by day or by night, as long as it is");
  EXPECT_GT(button.heightForWidth(400), oneLine);
  EXPECT_GT(button.heightForWidth(200), button.heightForWidth(400));
}

TEST_F(SwitchTest, MarkupInATitleIsText) {
  show(false, "<b>Start</b> & go");
  EXPECT_EQ(button.accessibleName().toStdString(), "<b>Start</b> & go");
  EXPECT_GT(button.sizeHint().width(), QFontMetrics(button.font()).horizontalAdvance("<b>Start</b> & go"));
}

}  // namespace
}  // namespace tollvane
