// What the settings window looks like to the eye, and sounds like to a screen reader.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QScreen>
#include <algorithm>
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
  for (int y = area.top(); y <= area.bottom(); ++y) {
    for (int x = area.left(); x <= area.right(); ++x)
      count += contrast(image.pixelColor(x, y), behind) >= least ? 1 : 0;
  }
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

}  // namespace
}  // namespace tollvane::test
