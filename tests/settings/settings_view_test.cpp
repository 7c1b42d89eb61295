#include "settings/settings_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/linux_wording.h"
#include "tests/virtual/core_parts.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using ui::TextStyle;
using namespace std::chrono_literals;

class SettingsViewTest : public testing::Test {
 protected:
  SettingsViewTest() { model.refresh(); }

  ui::SettingsContent body(bool welcome = false) {
    return SettingsView{model, welcome, "1.2", nullptr}.body(macWording);
  }
  void connectAll() {
    model.isConnected = [](Browser) { return true; };
    model.refresh();
  }

  static std::string describe(const ui::Text& text) { return text.text; }
  static std::string describe(const ui::Image& image) { return "image " + image.symbolName; }
  static std::string describe(const ui::Dot& dot) { return dot.opacity == 1 ? "dot" : "faint dot"; }
  static std::string describe(const ui::Toggle& toggle) {
    return std::string(toggle.style == ui::Toggle::Style::checkBox ? "check box " : "switch ") + toggle.title +
           (toggle.isOn ? " on" : " off");
  }
  static std::string describe(const ui::Button& button) {
    return "button " + button.title + (button.isEnabled ? "" : " disabled");
  }
  static std::string describe(const ui::ApplicationIcon& icon) { return "icon " + icon.name; }
  static std::string describe(const ui::Row& row) {
    std::string text;
    for (const auto& control : row.controls) {
      const std::string word = std::visit([](const auto& each) { return describe(each); }, control);
      if (word != "icon ") text += (text.empty() ? "" : " | ") + word;
    }
    return text;
  }
  static std::vector<std::string> describe(const ui::Section& section) {
    std::vector<std::string> texts;
    for (const auto& element : section.elements)
      texts.push_back(std::visit([](const auto& each) { return describe(each); }, element));
    return texts;
  }
  template <typename T>
  static const T& at(const ui::Section& section, std::size_t index) {
    return std::get<T>(section.elements.at(index));
  }

  test::VirtualPlatform system;
  LoginItem loginItem{system.login, system.files, system.locations};
  SettingsModel model = test::makeSettingsModel(system, loginItem);
};

constexpr std::string_view introduction =
    "Tollvane keeps track of which app or browser tab made each sound on your Mac. After a mystery ding, click the "
    "bell "
    "in your menu bar to see what it was. Click an entry to go straight to it.";
constexpr std::string_view dontSeeTheBell =
    "Don't see the bell? If your menu bar is full, macOS hides extra icons, often behind the camera notch. Hide a few "
    "in "
    "System Settings, Menu Bar. You can also open Tollvane again from Applications to bring back this window.";

TEST_F(SettingsViewTest, TheHeadShowsTheBellAndWhatTollvaneIsFor) {
  const auto content = body();
  EXPECT_EQ(content.icon, (ui::Image{"bell.fill", TextColor::controlAccent, 28, FontWeight::semibold}));
  EXPECT_THAT(content.introduction,
              ElementsAre(ui::Text{"Tollvane", TextStyle::title, TextColor::label, FontWeight::semibold},
                          ui::Text{std::string(introduction), TextStyle::callout, TextColor::secondaryLabel}));
}

TEST_F(SettingsViewTest, TheWelcomeGreetsTheUserAndHelpsToFindTheBell) {
  EXPECT_THAT(body(true).introduction,
              ElementsAre(ui::Text{"Welcome to Tollvane", TextStyle::title, TextColor::label, FontWeight::semibold},
                          ui::Text{std::string(introduction), TextStyle::callout, TextColor::secondaryLabel},
                          ui::Text{std::string(dontSeeTheBell), TextStyle::caption, TextColor::secondaryLabel}));
}

TEST_F(SettingsViewTest, TheFooterNamesTheVersion) {
  EXPECT_EQ(body().footer, (ui::Text{"Version 1.2 · Everything stays on this Mac. Patent pending.", TextStyle::caption,
                                     TextColor::secondaryLabel}));
}

TEST_F(SettingsViewTest, TheSectionsAreInTheirOrder) {
  const auto content = body();
  ASSERT_EQ(content.sections.size(), 3u);
  EXPECT_EQ(content.sections[0].title, "General");
  EXPECT_EQ(content.sections[1].title, "Browser extensions");
  EXPECT_EQ(content.sections[2].title, "Other browsers");
}

TEST_F(SettingsViewTest, GeneralHasTheTwoSwitches) {
  EXPECT_THAT(describe(body().sections[0]),
              ElementsAre("switch Start Tollvane when you log in off", "switch Mark browser tabs that made a sound off",
                          "Adds a ♪ to the title of a background tab that played sound, until you visit it."));
  EXPECT_EQ(at<ui::Text>(body().sections[0], 2).style, TextStyle::caption);
  EXPECT_EQ(at<ui::Text>(body().sections[0], 2).color, TextColor::secondaryLabel);
}

TEST_F(SettingsViewTest, ANoteStandsInOrangeUnderTheLoginSwitch) {
  system.login.state = LoginStatus::requiresApproval;
  model.refresh();
  EXPECT_EQ(at<ui::Text>(body().sections[0], 1), (ui::Text{"Approve Tollvane in System Settings, General, Login Items.",
                                                           TextStyle::caption, TextColor::orange}));
}

TEST_F(SettingsViewTest, TheSwitchesAreBoundToTheModel) {
  at<ui::Toggle>(body().sections[0], 0).set(true);
  EXPECT_EQ(system.login.state, LoginStatus::enabled);
  EXPECT_TRUE(at<ui::Toggle>(body().sections[0], 0).isOn);
  at<ui::Toggle>(body().sections[0], 1).set(true);
  EXPECT_TRUE(Prefs(system.defaults).markTabs());
  EXPECT_TRUE(at<ui::Toggle>(body().sections[0], 1).isOn);
  at<ui::Toggle>(body().sections[2], 2).set(false);
  EXPECT_FALSE(Prefs(system.defaults).suggestExtension());
  EXPECT_FALSE(at<ui::Toggle>(body().sections[2], 2).isOn);
}

TEST_F(SettingsViewTest, MissingExtensionsCanBeTickedAndAdded) {
  system.workspace.installed["com.google.Chrome"] = "/apps/chrome";
  system.workspace.icons["com.google.Chrome"] = "google-chrome";
  model.refresh();
  EXPECT_THAT(
      describe(body().sections[1]),
      ElementsAre(
          "Add the free extension to each browser you use, so Tollvane can name the exact tab that made a sound.",
          "check box Google Chrome off | icon google-chrome | Google Chrome | ",
          "check box Microsoft Edge off | Microsoft Edge | Not found on this Mac",
          "check box Firefox off | Firefox | Not found on this Mac",
          "Each browser opens its store page. Click Add there to finish.", "button Add selected disabled"));
  EXPECT_EQ(at<ui::Text>(body().sections[1], 0).style, TextStyle::callout);
  EXPECT_EQ(std::get<ui::Text>(at<ui::Row>(body().sections[1], 2).controls.back()),
            (ui::Text{"Not found on this Mac", TextStyle::caption, TextColor::secondaryLabel}));
}

TEST_F(SettingsViewTest, ATickEnablesTheButtonWhichOpensTheStore) {
  system.bundle.info["TollvaneSite"] = "https://example.org";
  std::get<ui::Toggle>(at<ui::Row>(body().sections[1], 2).controls[0]).set(true);
  EXPECT_THAT(*model.ticked, ElementsAre("edge"));
  const auto section = body().sections[1];
  const auto& button = at<ui::Button>(section, 5);
  EXPECT_TRUE(button.isEnabled);
  button.action();
  system.queue.advance(10s);
  EXPECT_THAT(system.workspace.opened, ElementsAre("https://example.org/go/edge"));
  std::get<ui::Toggle>(at<ui::Row>(section, 2).controls[0]).set(false);
  EXPECT_THAT(*model.ticked, testing::IsEmpty());
}

TEST_F(SettingsViewTest, ATickedExtensionThatIsConnectedDoesNotEnableTheButton) {
  model.setTicked("firefox", true);
  model.isConnected = [](Browser browser) { return browser == Browser::firefox; };
  model.refresh();
  EXPECT_THAT(describe(body().sections[1]), Contains("button Add selected disabled"));
}

TEST_F(SettingsViewTest, WithEverythingConnectedThereIsNothingToAdd) {
  connectAll();
  EXPECT_THAT(
      describe(body().sections[1]),
      ElementsAre(
          "Add the free extension to each browser you use, so Tollvane can name the exact tab that made a sound.",
          "image checkmark.circle.fill | Google Chrome | Added", "image checkmark.circle.fill | Microsoft Edge | Added",
          "image checkmark.circle.fill | Firefox | Added"));
  const auto section = body().sections[1];
  EXPECT_EQ(std::get<ui::Image>(at<ui::Row>(section, 1).controls[0]).color, TextColor::green);
  EXPECT_EQ(std::get<ui::Text>(at<ui::Row>(section, 1).controls.back()),
            (ui::Text{"Added", TextStyle::caption, TextColor::green}));
}

TEST_F(SettingsViewTest, WithoutOtherBrowsersOnlyTheHintTheCaptionsAndTheSwitchAreShown) {
  EXPECT_THAT(
      describe(body().sections[2]),
      ElementsAre("Safari support is built in. Turn it on in Safari Settings, Extensions.",
                  "Browser sounds are always listed. The extension adds which tab made them and lets you jump to it. "
                  "Brave and Arc use the Chrome extension.",
                  "switch Suggest the extension under browser sounds on",
                  "When a browser without the extension makes a sound, the list shows a link to add it."));
  EXPECT_EQ(at<ui::Text>(body().sections[2], 0).color, TextColor::secondaryLabel);
}

TEST_F(SettingsViewTest, OtherBrowsersShowTheirState) {
  model.browserStatus = [] {
    return std::vector<BrowserRow>{{"brave", "Brave Browser", "Not running", false},
                                   {"safari", "Safari", "Connected", true}};
  };
  model.refresh();
  const auto section = body().sections[2];
  EXPECT_EQ(describe(section)[0], "faint dot | Brave Browser | Not running");
  EXPECT_EQ(describe(section)[1], "dot | Safari | Connected");
  const auto& brave = at<ui::Row>(section, 0);
  EXPECT_EQ(brave.identifier, "brave");
  EXPECT_EQ(std::get<ui::Dot>(brave.controls[0]), (ui::Dot{TextColor::secondaryLabel, 0.4}));
  EXPECT_EQ(std::get<ui::Dot>(at<ui::Row>(section, 1).controls[0]), (ui::Dot{TextColor::green, 1}));
  EXPECT_EQ(std::get<ui::Text>(brave.controls.back()),
            (ui::Text{"Not running", TextStyle::callout, TextColor::secondaryLabel}));
}

TEST_F(SettingsViewTest, OnLinuxNoSentenceNamesAnotherSystem) {
  const auto content = SettingsView{model, true, "1.2", nullptr}.body(linuxWording);
  std::string all = content.footer.text;
  for (const auto& text : content.introduction) all += text.text;
  for (const auto& section : content.sections)
    for (const auto& text : describe(section)) all += text;
  for (const char* word : {"Mac", "menu bar", "Menu Bar", "System Settings", "Applications", "Safari"})
    EXPECT_EQ(all.find(word), std::string::npos) << word;
}

}  // namespace
}  // namespace tollvane
