// Tests of what the settings window on macOS draws anew, and what it only changes.
#include "platform/macos/decisions/settings_shape.h"

#include <gtest/gtest.h>

namespace tollvane {
namespace {

ui::SettingsContent content() {
  ui::SettingsContent content;
  content.icon = {"bell.fill"};
  content.introduction = {{"Tollvane"}, {"Keeps track."}};
  content.sections = {
      {"General", {ui::Toggle{"startAtLogin", "Start", ui::Toggle::Style::switchControl, false, {}}, ui::Text{"Why"}}},
      {"Browsers",
       {ui::Row{"chrome", {ui::Toggle{"chrome", "Chrome", ui::Toggle::Style::checkBox, true, {}}, ui::Text{"Chrome"}}},
        ui::Button{"add", "Add", true, {}}}},
  };
  content.footer = {"Version 1"};
  return content;
}

TEST(SettingsShapeTest, ControlsStandInTheOrderInWhichTheyAreRead) {
  const auto controls = controlsOf(content());
  ASSERT_EQ(controls.size(), 11u);
  EXPECT_TRUE(std::holds_alternative<ui::Image>(controls[0]));
  EXPECT_EQ(std::get<ui::Text>(controls[1]).text, "Tollvane");
  EXPECT_EQ(std::get<ui::Text>(controls[3]).text, "General");
  EXPECT_EQ(std::get<ui::Toggle>(controls[4]).identifier, "startAtLogin");
  EXPECT_EQ(std::get<ui::Text>(controls[5]).text, "Why");
  EXPECT_EQ(std::get<ui::Text>(controls[6]).text, "Browsers");
  EXPECT_EQ(std::get<ui::Toggle>(controls[7]).identifier, "chrome");
  EXPECT_EQ(std::get<ui::Text>(controls[8]).text, "Chrome");
  EXPECT_EQ(std::get<ui::Button>(controls[9]).identifier, "add");
  EXPECT_EQ(std::get<ui::Text>(controls[10]).text, "Version 1");
}

TEST(SettingsShapeTest, NewTextsAndStatesNeedNoNewViews) {
  ui::SettingsContent other = content();
  std::get<ui::Toggle>(other.sections[0].elements[0]).isOn = true;
  std::get<ui::Text>(other.sections[0].elements[1]).text = "Because";
  std::get<ui::Button>(other.sections[1].elements[1]).isEnabled = false;
  EXPECT_EQ(shapeOf(other), shapeOf(content()));
  EXPECT_EQ(controlsOf(other).size(), controlsOf(content()).size());
}

TEST(SettingsShapeTest, OtherControlsNeedNewViews) {
  ui::SettingsContent more = content();
  more.sections[0].elements.emplace_back(ui::Text{"A note"});
  EXPECT_NE(shapeOf(more), shapeOf(content()));

  ui::SettingsContent connected = content();
  std::get<ui::Row>(connected.sections[1].elements[0]).controls[0] = ui::Image{"checkmark.circle.fill"};
  EXPECT_NE(shapeOf(connected), shapeOf(content()));

  ui::SettingsContent renamed = content();
  std::get<ui::Row>(renamed.sections[1].elements[0]).identifier = "edge";
  EXPECT_NE(shapeOf(renamed), shapeOf(content()));

  ui::SettingsContent introduced = content();
  introduced.introduction.pop_back();
  EXPECT_NE(shapeOf(introduced), shapeOf(content()));
}

TEST(SettingsShapeTest, TheSameControlsInOtherSectionsNeedNewViews) {
  ui::SettingsContent moved = content();
  moved.sections[1].elements.insert(moved.sections[1].elements.begin(), moved.sections[0].elements[1]);
  moved.sections[0].elements.pop_back();
  EXPECT_NE(shapeOf(moved), shapeOf(content()));
}

}  // namespace
}  // namespace tollvane
