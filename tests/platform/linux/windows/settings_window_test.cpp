#include "platform/linux/windows/settings_window.h"

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
#include "tests/probes/settings_scenarios.h"

namespace tollvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class SettingsPageTest : public testing::Test {
 protected:
  SettingsPageTest() { page.setFixedSize(520, 640); }

  void show(SettingsScenario& scenario) {
    page.setContent(scenario.content());
    page.show();
    page.activateWindow();
    settle();
  }
  void redraw(SettingsScenario& scenario) {
    page.setContent(scenario.content());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    settle();
  }
  // Each layout asks the layout around it for room, which takes one round of events.
  static void settle() {
    for (int depth = 0; depth < 10; ++depth) QApplication::processEvents();
  }

  // The button with this accessible name.
  QAbstractButton* button(const std::string& name) {
    for (auto* each : page.findChildren<QAbstractButton*>()) {
      if (each->isVisibleTo(&page) &&
          QAccessible::queryAccessibleInterface(each)->text(QAccessible::Name).toStdString() == name)
        return each;
    }
    return nullptr;
  }
  QLabel* label(const std::string& text) {
    for (auto* each : page.findChildren<QLabel*>()) {
      if (each->isVisibleTo(&page) && each->text().toStdString() == text) return each;
    }
    return nullptr;
  }
  QScrollBar* bar() { return page.findChild<QScrollArea*>()->verticalScrollBar(); }
  int onScreen(const QWidget* widget) { return widget->mapTo(&page, QPoint()).y(); }

  void press(QWidget* target, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
      QKeyEvent event(type, key, modifiers);
      QApplication::sendEvent(target, &event);
    }
  }
  static void click(QWidget* target) {
    const QPoint at = target->rect().center();
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      QMouseEvent event(type, at, target->mapToGlobal(at), Qt::LeftButton,
                        type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
      QApplication::sendEvent(target, &event);
    }
  }

  static ui::SettingsContent oneRow(ui::Element element) {
    ui::SettingsContent content;
    content.sections = {{"Section", {std::move(element)}}};
    return content;
  }

  SettingsPage page;
};

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

TEST_F(SettingsPageTest, ALargerFontMakesALargerWindowThatStaysOnTheScreen) {
  page.setBaseSize({300, 200});
  const QFont own = QApplication::font();
  QFont font = own;
  font.setPixelSize(13);
  QApplication::setFont(font);
  settle();
  EXPECT_EQ(page.size(), QSize(300, 200));
  font.setPixelSize(26);
  QApplication::setFont(font);
  settle();
  EXPECT_EQ(page.size(), QSize(600, 400));
  font.setPixelSize(130);
  QApplication::setFont(font);
  settle();
  EXPECT_LE(page.height(), page.screen()->availableGeometry().height());
  EXPECT_LE(page.width(), page.screen()->availableGeometry().width());
  QApplication::setFont(own);
}

// The number of pixels that differ from all around them at least so much, in the part of the picture within `area`.
int pixelsWithContrast(const QImage& image, const QRect& area, const QColor& behind, double least) {
  int count = 0;
  for (int y = area.top(); y <= area.bottom(); ++y)
    for (int x = area.left(); x <= area.right(); ++x)
      count += contrast(image.pixelColor(x, y), behind) >= least ? 1 : 0;
  return count;
}

TEST_F(SettingsPageTest, TheOutlineOfEachControlIsSeen) {
  for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
    SettingsScenario scenario("none");
    QApplication::setPalette(paletteFor(scheme, QApplication::palette()));
    show(scenario);
    const QImage image = page.grab().toImage();
    const QColor behind = SettingsLook(QApplication::palette(), QApplication::font()).group();
    // Nothing is ticked or turned on, so each control is known by its outline only.
    for (const char* name : {"Microsoft Edge", "Add selected", "Mark browser tabs that made a sound"}) {
      const QAbstractButton* control = button(name);
      const QRect area(control->mapTo(&page, QPoint()), control->size());
      EXPECT_GE(pixelsWithContrast(image, area & image.rect(), behind, visibleContrast), 24) << name;
    }
    for (const auto* each : page.findChildren<QScrollBar*>()) {
      if (!each->isVisible() || each == bar()) continue;
      const QRect area(each->mapTo(&page, QPoint()), each->size());
      const QColor around = QApplication::palette().color(QPalette::Window);
      EXPECT_GE(pixelsWithContrast(image, area, around, visibleContrast), 400);
    }
  }
  QApplication::setPalette(QPalette());
}

TEST_F(SettingsPageTest, InALayoutFromRightToLeftTextsBeginOnTheRight) {
  QApplication::setLayoutDirection(Qt::RightToLeft);
  {
    SettingsPage mirrored;
    mirrored.setFixedSize(520, 640);
    SettingsScenario scenario("partly");
    mirrored.setContent(scenario.content());
    mirrored.show();
    settle();
    for (const auto* each : mirrored.findChildren<QLabel*>()) {
      const bool atEnd = each->text() == QLatin1String("Added") || each->text().startsWith("Not found");
      if (each->alignment() & Qt::AlignHCenter || each->text().isEmpty()) continue;
      EXPECT_TRUE(each->alignment() & (atEnd ? Qt::AlignLeft : Qt::AlignRight)) << each->text().toStdString();
      EXPECT_TRUE(each->alignment() & Qt::AlignAbsolute) << each->text().toStdString();
    }
  }
  QApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_F(SettingsPageTest, NoTextIsMarkup) {
  const std::string hostile = "<a href='x:y'>click</a> &amp; <b>me</b>";
  ui::SettingsContent content = oneRow(ui::Text{hostile});
  content.introduction = {{hostile}};
  content.footer = {hostile};
  content.sections[0].title = hostile;
  content.sections[0].elements.emplace_back(ui::Row{"row", {ui::Dot{}, ui::Text{hostile}, ui::Text{hostile}}});
  content.sections[0].elements.emplace_back(ui::Button{"go", "Save & go", true, nullptr});
  page.setContent(content);
  for (const auto* each : page.findChildren<QLabel*>()) {
    EXPECT_EQ(each->textFormat(), Qt::PlainText);
    EXPECT_EQ(each->text().toStdString(), hostile);
  }
  EXPECT_EQ(button("Save & go")->text().toStdString(), "Save && go") << "none of its letters is a mnemonic";
}

TEST_F(SettingsPageTest, AWordLongerThanTheWindowIsWrapped) {
  page.setContent(oneRow(ui::Text{std::string(500, 'x'), ui::TextStyle::caption}));
  page.show();
  QApplication::processEvents();
  const auto* scroll = page.findChild<QScrollArea*>();
  EXPECT_LE(scroll->widget()->width(), scroll->viewport()->width());
}

TEST_F(SettingsPageTest, TheColoursFollowTheDesktopWhileTheWindowIsOpen) {
  SettingsScenario scenario("note");
  show(scenario);
  for (const ColorScheme scheme : {ColorScheme::dark, ColorScheme::light}) {
    QApplication::setPalette(paletteFor(scheme, QApplication::palette()));
    QApplication::processEvents();
    const SettingsLook look(QApplication::palette(), QApplication::font());
    for (const auto* each : page.findChildren<QLabel*>()) {
      EXPECT_GE(contrast(each->palette().color(QPalette::WindowText), look.group()), 4.5) << each->text().toStdString();
    }
    EXPECT_EQ(label("The system didn't allow that change: Permission denied")->palette().color(QPalette::WindowText),
              look.color(TextColor::orange));
    const auto* group = page.findChild<QScrollArea*>()->widget()->findChild<QAbstractButton*>()->parentWidget();
    EXPECT_EQ(const_cast<QWidget*>(group)->grab().toImage().pixelColor(30, 3).rgb(), look.group().rgb());
  }
  QApplication::setPalette(QPalette());
}

TEST_F(SettingsPageTest, TheFontsFollowTheDesktopWhileTheWindowIsOpen) {
  SettingsScenario scenario("partly");
  show(scenario);
  const QFont own = QApplication::font();
  QFont larger = own;
  larger.setPointSizeF(15.5);
  QApplication::setFont(larger);
  QApplication::processEvents();
  EXPECT_NEAR(label("Tollvane")->font().pointSizeF(), 15.5 * 1.6, 0.1);
  EXPECT_NEAR(label("Firefox")->font().pointSizeF(), 15.5, 0.1);
  EXPECT_NEAR(button("Mark browser tabs that made a sound")->font().pointSizeF(), 15.5, 0.1);
  QApplication::setFont(own);
}

TEST_F(SettingsPageTest, ScreenReadersHearEachControlWithWhatIsSaidBelowIt) {
  SettingsScenario scenario("welcome");
  show(scenario);
  const auto heard = [&](const std::string& name, QAccessible::Text what) {
    return QAccessible::queryAccessibleInterface(button(name))->text(what).toStdString();
  };
  EXPECT_EQ(heard("Mark browser tabs that made a sound", QAccessible::Description),
            "Adds a ♪ to the title of a background tab that played sound, until you visit it.");
  EXPECT_EQ(heard("Microsoft Edge", QAccessible::Description), "Not found on this computer");
  for (const char* name : {"Google Chrome", "Microsoft Edge", "Firefox", "Start Tollvane when you log in"})
    EXPECT_EQ(QAccessible::queryAccessibleInterface(button(name))->role(), QAccessible::CheckBox) << name;
  EXPECT_EQ(QAccessible::queryAccessibleInterface(button("Add selected"))->role(), QAccessible::Button);
  EXPECT_EQ(QAccessible::queryAccessibleInterface(label("Firefox"))->role(), QAccessible::StaticText);
}

// What accessibility tools read, one line a widget: role and name, and the widgets inside of it further in.
void read(const QAccessibleInterface* widget, const std::string& indent, std::vector<std::string>& lines) {
  static const std::map<QAccessible::Role, std::string> roles = {
      {QAccessible::Window, "window"}, {QAccessible::Grouping, "group"},  {QAccessible::CheckBox, "check box"},
      {QAccessible::Button, "button"}, {QAccessible::StaticText, "text"},
  };
  const auto role = roles.find(widget->role());
  const std::string name = widget->text(QAccessible::Name).toStdString();
  if (role != roles.end() && !widget->state().invisible) lines.push_back(indent + role->second + " " + name);
  const std::string further = role == roles.end() ? indent : indent + "  ";
  for (int i = 0; i < widget->childCount(); ++i) {
    if (const auto* child = widget->child(i)) read(child, further, lines);
  }
}

TEST_F(SettingsPageTest, ScreenReadersReadAWindowWithGroupsFromTopToBottom) {
  page.setWindowTitle("Tollvane Settings");
  SettingsScenario scenario("browsers");
  show(scenario);
  scenario.model().loginNote = "A note with" + std::string(60, 'x');
  redraw(scenario);
  std::vector<std::string> lines;
  read(QAccessible::queryAccessibleInterface(&page), "", lines);
  ASSERT_GE(lines.size(), 12U);
  EXPECT_EQ(lines[0], "window Tollvane Settings");
  const std::string all = std::accumulate(lines.begin(), lines.end(), std::string(),
                                          [](const auto& sum, const auto& line) { return sum + line + "\n"; });
  std::size_t place = 0;
  for (const std::string wanted :
       {"text Tollvane\n", "text General\n", "group General\n", "check box Start Tollvane when you log in\n",
        "text A note with", "check box Mark browser tabs", "text Adds a ♪", "group Browser extensions\n",
        "check box Google Chrome\n", "text Google Chrome\n", "button Add selected\n", "group Other browsers\n",
        "text Brave Browser\n", "text Connected\n", "text Version 1.0"}) {
    const std::size_t next = all.find(wanted, place);
    ASSERT_NE(next, std::string::npos) << wanted << " is not read in its turn:\n" << all;
    place = next + 1;
  }
  EXPECT_EQ(all.find("\u200b"), std::string::npos) << "places where a line may end are not read";
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
