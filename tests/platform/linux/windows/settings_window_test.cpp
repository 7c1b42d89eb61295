#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <map>
#include <numeric>
#include <string>
#include <vector>

#include "platform/linux/drawing/appearance.h"
#include "platform/linux/drawing/contrast.h"
#include "platform/linux/menu/menu_style.h"
#include "platform/linux/windows/form_group.h"
#include "platform/linux/windows/settings_look.h"
#include "tests/platform/linux/windows/settings_page_test.h"
#include "tests/probes/settings_scenarios.h"

namespace tollvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// Makes controls and collects what the user asks for with them.
struct Wishes {
  std::map<std::string, std::vector<bool>> toggled;
  int pressed = 0;

  ui::Toggle toggle(const std::string& id, ui::Toggle::Style style, bool on = false) {
    return {id, id, style, on, [this, id](bool wish) { toggled[id].push_back(wish); }};
  }
};

TEST_F(SettingsPageTest, EveryControlExpressesTheUsersWishOnce) {
  Wishes wishes;
  ui::SettingsContent content;
  content.sections = {
      {"One", {wishes.toggle("switch", ui::Toggle::Style::switchControl)}},
      {"Two",
       {ui::Row{"row", {wishes.toggle("box", ui::Toggle::Style::checkBox, true), ui::Text{"Firefox"}}},
        ui::Button{"go", "Go", true, [&] { ++wishes.pressed; }}}},
  };
  page.setContent(content);
  page.show();
  click(button("switch"));
  press(button("box"), Qt::Key_Space);
  click(button("Go"));
  EXPECT_THAT(wishes.toggled["switch"], ElementsAre(true));
  EXPECT_THAT(wishes.toggled["box"], ElementsAre(false));
  EXPECT_EQ(wishes.pressed, 1);
}

TEST_F(SettingsPageTest, DrawingAnotherStateIsNotTakenForTheUsersWish) {
  Wishes wishes;
  for (const bool on : {false, true, false}) {
    ui::SettingsContent content = oneRow(wishes.toggle("switch", ui::Toggle::Style::switchControl, on));
    content.sections.push_back({"Two", {ui::Row{"row", {wishes.toggle("box", ui::Toggle::Style::checkBox, on)}}}});
    page.setContent(content);
    EXPECT_EQ(button("switch")->isChecked(), on);
    EXPECT_EQ(button("box")->isChecked(), on);
  }
  EXPECT_THAT(wishes.toggled, IsEmpty());
}

TEST_F(SettingsPageTest, AClickOnTheNameReachesTheRowsCheckBox) {
  SettingsScenario scenario("welcome");
  show(scenario);
  ASSERT_TRUE(scenario.model().ticked->contains("firefox"));
  click(label("Firefox")->parentWidget());
  EXPECT_FALSE(scenario.model().ticked->contains("firefox"));
}

TEST_F(SettingsPageTest, TheButtonIsDisabledWhileNothingIsTicked) {
  SettingsScenario scenario("none");
  show(scenario);
  EXPECT_FALSE(button("Add selected")->isEnabled());
  click(button("Microsoft Edge"));
  redraw(scenario);
  EXPECT_TRUE(button("Add selected")->isEnabled());
  click(button("Add selected"));
  scenario.system().queue.runDue();
  EXPECT_EQ(scenario.system().workspace.opened.size(), 1u);
}

TEST_F(SettingsPageTest, ARefusedSwitchSpringsBackAndSaysWhy) {
  SettingsScenario scenario("partly");
  scenario.system().login.refusal = "Permission denied";
  show(scenario);
  QAbstractButton* login = button("Start Tollvane when you log in");
  click(login);
  EXPECT_TRUE(login->isChecked()) << "until the model refuses";
  redraw(scenario);
  EXPECT_FALSE(login->isChecked());
  EXPECT_EQ(scenario.system().login.changes, 1);
  EXPECT_NE(label("The system didn't allow that change: Permission denied"), nullptr);
}

TEST_F(SettingsPageTest, TheSameContentTouchesNothing) {
  SettingsScenario scenario("browsers");
  show(scenario);
  struct Watch : QObject {
    std::vector<std::string> touched;
    bool eventFilter(QObject* watched, QEvent* event) override {
      const auto type = event->type();
      const bool touches = type == QEvent::Paint || type == QEvent::Resize || type == QEvent::Move ||
                           type == QEvent::ChildAdded || type == QEvent::PaletteChange || type == QEvent::FontChange;
      if (touches) touched.push_back(watched->metaObject()->className() + (" " + std::to_string(type)));
      return false;
    }
  } watch;
  qApp->installEventFilter(&watch);
  redraw(scenario);
  EXPECT_THAT(watch.touched, IsEmpty());
  page.update();
  QApplication::processEvents();
  EXPECT_THAT(watch.touched, Not(IsEmpty())) << "the watch works";
}

TEST_F(SettingsPageTest, ARowKeepsItsWidgetWhenANoteAppearsAboveIt) {
  SettingsScenario scenario("partly");
  show(scenario);
  const QWidget* marks = button("Mark browser tabs that made a sound");
  const QWidget* caption =
      label("When a browser without the extension makes a sound, the list shows a link to add it.");
  scenario.model().loginNote = "A note";
  redraw(scenario);
  EXPECT_EQ(button("Mark browser tabs that made a sound"), marks);
  EXPECT_EQ(label("When a browser without the extension makes a sound, the list shows a link to add it."), caption);
  EXPECT_LT(onScreen(button("Start Tollvane when you log in")), onScreen(label("A note")));
  EXPECT_LT(onScreen(label("A note")), onScreen(marks));
  scenario.model().loginNote = std::nullopt;
  redraw(scenario);
  EXPECT_EQ(label("A note"), nullptr);
}

TEST_F(SettingsPageTest, TheFocusStays) {
  SettingsScenario scenario("partly");
  show(scenario);
  QAbstractButton* edge = button("Microsoft Edge");
  edge->setFocus(Qt::TabFocusReason);
  scenario.model().loginNote = "A note";
  scenario.model().setTicked("chrome", false);
  redraw(scenario);
  EXPECT_TRUE(edge->hasFocus());
  EXPECT_EQ(button("Microsoft Edge"), edge);
}

TEST_F(SettingsPageTest, VisibleRowsStayInTheirPlaceWhenANoteAppearsAboveThem) {
  SettingsScenario scenario("browsers");
  show(scenario);
  bar()->setValue(bar()->maximum());
  ASSERT_GT(bar()->value(), 50) << "the place of the note is out of sight";
  const QWidget* suggest = button("Suggest the extension under browser sounds");
  const int place = onScreen(suggest);
  const int length = bar()->maximum();
  scenario.model().loginNote = "A note that takes\u00a0some room";
  redraw(scenario);
  EXPECT_GT(bar()->maximum(), length) << "the note has made the form longer";
  EXPECT_EQ(onScreen(suggest), place);
  scenario.model().loginNote = std::nullopt;
  redraw(scenario);
  EXPECT_EQ(onScreen(suggest), place);
}

TEST_F(SettingsPageTest, AFormThatShowsItsTopStaysThere) {
  SettingsScenario scenario("browsers");
  show(scenario);
  scenario.model().loginNote = "A note";
  redraw(scenario);
  EXPECT_EQ(bar()->value(), 0);
}

TEST_F(SettingsPageTest, AConnectedBrowsersCheckBoxBecomesAMark) {
  SettingsScenario scenario("partly");
  show(scenario);
  button("Google Chrome")->setFocus(Qt::TabFocusReason);
  scenario.model().isConnected = [](Browser) { return true; };
  scenario.model().refresh();
  redraw(scenario);
  EXPECT_EQ(button("Google Chrome"), nullptr);
  EXPECT_EQ(button("Add selected"), nullptr);
  ASSERT_NE(page.focusWidget(), nullptr) << "the keyboard is still somewhere";
  EXPECT_TRUE(page.focusWidget()->isVisible());
}

TEST_F(SettingsPageTest, AControlMayCauseItsOwnRemoval) {
  bool done = false;
  ui::SettingsContent content = oneRow(ui::Toggle{"gone", "gone", ui::Toggle::Style::switchControl, false, [&](bool) {
                                                    page.setContent({});
                                                    done = true;
                                                  }});
  page.setContent(content);
  page.show();
  click(button("gone"));
  EXPECT_TRUE(done);
  EXPECT_EQ(button("gone"), nullptr);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST_F(SettingsPageTest, TheTabKeyGoesFromTopToBottomAlsoThroughControlsThatCameLater) {
  SettingsScenario scenario("connected");
  show(scenario);
  scenario.model().isConnected = nullptr;
  scenario.model().refresh();
  redraw(scenario);
  std::vector<std::string> reached;
  for (int i = 0; i < 7; ++i) {
    press(page.focusWidget() ? page.focusWidget() : &page, Qt::Key_Tab);
    ASSERT_NE(page.focusWidget(), nullptr);
    reached.push_back(QAccessible::queryAccessibleInterface(page.focusWidget())->text(QAccessible::Name).toStdString());
  }
  EXPECT_THAT(reached, ElementsAre("Start Tollvane when you log in", "Mark browser tabs that made a sound",
                                   "Google Chrome", "Microsoft Edge", "Firefox",
                                   "Suggest the extension under browser sounds", "Start Tollvane when you log in"))
      << "the disabled button is left out";
}

TEST_F(SettingsPageTest, TheTabKeyScrollsControlsIntoView) {
  SettingsScenario scenario("browsers");
  show(scenario);
  QAbstractButton* last = button("Suggest the extension under browser sounds");
  for (int i = 0; i < 20 && !last->hasFocus(); ++i) press(page.focusWidget() ? page.focusWidget() : &page, Qt::Key_Tab);
  ASSERT_TRUE(last->hasFocus());
  EXPECT_FALSE(last->visibleRegion().isEmpty());
}

TEST_F(SettingsPageTest, TheKeyboardScrolls) {
  SettingsScenario scenario("browsers");
  show(scenario);
  press(&page, Qt::Key_End);
  EXPECT_EQ(bar()->value(), bar()->maximum());
  press(button("Suggest the extension under browser sounds"), Qt::Key_PageUp);
  EXPECT_LT(bar()->value(), bar()->maximum());
  press(&page, Qt::Key_Home);
  EXPECT_EQ(bar()->value(), 0);
}

TEST_F(SettingsPageTest, EscapeAndControlWHideTheWindow) {
  SettingsScenario scenario("partly");
  for (const auto& [key, modifier] :
       {std::pair<Qt::Key, Qt::KeyboardModifier>{Qt::Key_Escape, Qt::NoModifier}, {Qt::Key_W, Qt::ControlModifier}}) {
    show(scenario);
    ASSERT_TRUE(page.isVisible());
    press(button("Google Chrome"), key, modifier);
    EXPECT_FALSE(page.isVisible());
  }
}

TEST_F(SettingsPageTest, EnterPressesTheButtonFromAnywhere) {
  int pressed = 0;
  ui::SettingsContent content;
  const auto offer = [&](bool enabled) {
    content.sections = {{"Section",
                         {ui::Toggle{"switch", "switch", ui::Toggle::Style::switchControl, false, nullptr},
                          ui::Button{"go", "Go", enabled, [&] { ++pressed; }}}}};
    page.setContent(content);
  };
  offer(true);
  page.show();
  press(button("switch"), Qt::Key_Return);
  press(&page, Qt::Key_Enter);
  EXPECT_EQ(pressed, 2);
  offer(false);
  press(&page, Qt::Key_Return);
  EXPECT_EQ(pressed, 2);
}

TEST_F(SettingsPageTest, TheThumbHasItsLengthAtTheFirstOpening) {
  SettingsScenario scenario("browsers");
  show(scenario);
  const QScrollBar* place = bar();
  for (const auto* each : page.findChildren<QScrollBar*>()) {
    if (each == place || !each->isVisible()) continue;
    EXPECT_EQ(each->pageStep(), page.findChild<QScrollArea*>()->viewport()->height());
    EXPECT_EQ(each->maximum(), place->maximum());
    return;
  }
  FAIL() << "there is no visible scroll bar";
}

TEST(QtSettingsWindows, AWindowIsMadeOfTheWantedSizeInTheMiddleAndBroughtForward) {
  std::vector<QWidget*> broughtForward;
  QtSettingsWindows windows([&](QWidget& window) {
    EXPECT_TRUE(window.isVisible());
    broughtForward.push_back(&window);
  });
  const auto window = windows.make({.title = "Tollvane Settings"});
  SettingsScenario scenario("partly");
  window->setContent(scenario.content());
  EXPECT_THAT(broughtForward, IsEmpty());
  window->makeKeyAndOrderFront();
  ASSERT_EQ(broughtForward.size(), 1u);
  QWidget& shown = *broughtForward[0];
  EXPECT_EQ(shown.windowTitle().toStdString(), "Tollvane Settings");
  EXPECT_FALSE(shown.windowIcon().isNull());
  EXPECT_EQ(shown.size(), QSize(520, 640));
  EXPECT_EQ(shown.minimumSize(), shown.maximumSize());
  EXPECT_FALSE(shown.windowFlags() & (Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint));
  EXPECT_TRUE(shown.windowFlags() & Qt::WindowCloseButtonHint);
  const QPoint off = shown.geometry().center() - shown.screen()->availableGeometry().center();
  EXPECT_LE(off.manhattanLength(), 40);

  shown.close();
  EXPECT_FALSE(shown.isVisible());
  window->makeKeyAndOrderFront();
  EXPECT_TRUE(shown.isVisible());
  shown.setWindowState(Qt::WindowMinimized);
  window->makeKeyAndOrderFront();
  EXPECT_FALSE(shown.isMinimized());
  EXPECT_EQ(broughtForward.size(), 3u);
}

}  // namespace
}  // namespace tollvane::test
