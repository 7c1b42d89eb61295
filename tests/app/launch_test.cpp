// The launch: the order of its steps, the first launch and later ones, the settings window, the hourly check.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/app_delegate.h"
#include "app/browser_status.h"
#include "support/json_value.h"
#include "tests/support/recording_connection.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::chrono_literals;

class LaunchTest : public testing::Test {
 protected:
  void launch() { delegate->applicationDidFinishLaunching(); }
  void launchAgain() {
    system.defaults.set("hasLaunchedBefore", true);
    launch();
  }
  const auto& windows() { return system.settingsWindows.windows; }
  std::shared_ptr<test::RecordingConnection> connect(Browser browser) {
    auto connection = std::make_shared<test::RecordingConnection>(browser);
    delegate->link().connections.push_back(connection);
    return connection;
  }

  test::VirtualPlatform system;
  std::unique_ptr<AppDelegate> delegate = std::make_unique<AppDelegate>(system.platform());
};

TEST_F(LaunchTest, TheFirstLaunchRegistersAtLoginAndWelcomes) {
  launch();
  EXPECT_TRUE(Prefs(system.defaults).hasLaunchedBefore());
  EXPECT_EQ(system.login.state, LoginStatus::enabled);
  ASSERT_THAT(windows(), SizeIs(1));
  EXPECT_EQ(windows()[0]->style.title, "Welcome");
  EXPECT_EQ(windows()[0]->style.width, 520);
  EXPECT_EQ(windows()[0]->style.height, 640);
  EXPECT_EQ(windows()[0]->broughtForward, 1);
  EXPECT_EQ(windows()[0]->content.introduction[0].text, "Welcome to Tollvane");
  EXPECT_TRUE(system.application.frontmost);
}

// The bell shows at once, and sounds are heard before browsers may report.
TEST_F(LaunchTest, TheStepsComeInTheirOrder) {
  test::Journal journal;
  system.writeDown(journal);
  const std::filesystem::path agent = "/home/user/Library/LaunchAgents/com.vostrel.tollvane.plist";
  system.files.contents[agent] = "plist";
  system.files.onRemove = [&](const auto& file) { journal.note("no " + file.filename().string()); };
  launch();
  EXPECT_THAT(journal.steps,
              ElementsAre("status item", "log tool", "watch of safari-inbox", "watch of Tollvane", "safari", "login",
                          "no com.vostrel.tollvane.plist", "window", "safari", "web"));
}

TEST_F(LaunchTest, ALaterLaunchNeitherRegistersNorWelcomes) {
  launchAgain();
  EXPECT_EQ(system.login.changes, 0);
  EXPECT_THAT(windows(), IsEmpty());
}

TEST_F(LaunchTest, AProgramThatIsRegisteredIsNotRegisteredAgain) {
  system.login.state = LoginStatus::enabled;
  launch();
  EXPECT_EQ(system.login.changes, 0);
  EXPECT_THAT(windows(), SizeIs(1));
}

TEST_F(LaunchTest, ARefusedRegistrationDoesNotStopTheWelcome) {
  system.login.refusal = "no";
  launch();
  EXPECT_THAT(windows(), SizeIs(1));
}

TEST_F(LaunchTest, ReopeningShowsTheSettingsAndSaysYes) {
  launchAgain();
  EXPECT_TRUE(delegate->applicationShouldHandleReopen(false));
  ASSERT_THAT(windows(), SizeIs(1));
  EXPECT_EQ(windows()[0]->style.title, "Tollvane Settings");
  EXPECT_EQ(windows()[0]->content.introduction[0].text, "Tollvane");
  EXPECT_TRUE(delegate->applicationShouldHandleReopen(true));
  EXPECT_THAT(windows(), SizeIs(1));
  EXPECT_EQ(windows()[0]->broughtForward, 2);
}

TEST_F(LaunchTest, ReopeningAWelcomeWindowKeepsTheWelcome) {
  launch();
  delegate->openSettings();
  ASSERT_THAT(windows(), SizeIs(1));
  EXPECT_EQ(windows()[0]->content.introduction[0].text, "Welcome to Tollvane");
  EXPECT_EQ(windows()[0]->broughtForward, 2);
}

TEST_F(LaunchTest, BothSettingsItemsOfTheMenuOpenTheWindow) {
  launchAgain();
  const Menu menu = system.statusBar.openMenu();
  for (const MenuItem& item : menu.items)
    if (item.title == "Settings…" || item.title == "Browser extensions…") item.action(item);
  ASSERT_THAT(windows(), SizeIs(1));
  EXPECT_EQ(windows()[0]->broughtForward, 2);
}

TEST_F(LaunchTest, TheWindowFollowsTheModelOnceTheWorkIsDone) {
  launchAgain();
  delegate->openSettings();
  system.queue.runDue();
  const int drawn = windows()[0]->drawn;
  delegate->settingsModel().setMarkTabs(true);
  delegate->settingsModel().setSuggestExtension(false);
  EXPECT_EQ(windows()[0]->drawn, drawn);
  system.queue.runDue();
  EXPECT_EQ(windows()[0]->drawn, drawn + 1);
  EXPECT_TRUE(std::get<ui::Toggle>(windows()[0]->content.sections[0].elements[1]).isOn);
}

TEST_F(LaunchTest, ABrowserThatConnectsShowsInTheWindow) {
  launchAgain();
  delegate->openSettings();
  system.queue.runDue();
  const int drawn = windows()[0]->drawn;
  const auto firefox = connect(Browser::firefox);
  for (int i = 0; i < 1000; ++i) delegate->link().handle(*firefox, {{"type", "hello"}, {"version", "1"}});
  EXPECT_EQ(windows()[0]->drawn, drawn);
  system.queue.advance(100ms);
  EXPECT_EQ(windows()[0]->drawn, drawn + 1) << "once for all of them";
  const auto& row = std::get<ui::Row>(windows()[0]->content.sections[1].elements[3]);
  EXPECT_EQ(std::get<ui::Image>(row.controls[0]).symbolName, "checkmark.circle.fill");
}

TEST_F(LaunchTest, EveryExtensionIsToldAtOnceThatTabsAreToBeMarked) {
  launchAgain();
  const auto firefox = connect(Browser::firefox);
  delegate->settingsModel().setMarkTabs(true);
  EXPECT_THAT(firefox->sent, ElementsAre(Message{{"type", "settings"}, {"markTabs", true}}));
}

TEST_F(LaunchTest, SafariIsAskedForItsStateAndThenEveryExtensionGetsTheSettings) {
  system.safari.state = true;
  launchAgain();
  EXPECT_THAT(system.safari.sent, IsEmpty());
  system.queue.runDue();
  EXPECT_THAT(system.safari.sent, SizeIs(1));
  EXPECT_EQ(system.safari.statesAsked, 1);
  delegate->openSettings();
  EXPECT_EQ(system.safari.statesAsked, 2);
}

TEST_F(LaunchTest, UpdatesAreCheckedAtTheStartAndEveryHour) {
  launchAgain();
  EXPECT_THAT(system.http.requests, SizeIs(1));
  system.http.answer(std::nullopt);
  system.queue.advance(3599s);
  EXPECT_THAT(system.http.requests, SizeIs(1));
  system.queue.advance(1s);
  EXPECT_THAT(system.http.requests, SizeIs(2));
  system.http.answer(std::nullopt);
  system.queue.advance(3600s);
  EXPECT_THAT(system.http.requests, SizeIs(3));
}

TEST_F(LaunchTest, TheHourlyCheckEndsWithTheDelegate) {
  launchAgain();
  delegate.reset();
  system.queue.advance(10h);
  EXPECT_THAT(system.http.requests, SizeIs(1));
}

TEST_F(LaunchTest, ALegacyAgentIsMigrated) {
  const std::filesystem::path agent = "/home/user/Library/LaunchAgents/com.vostrel.tollvane.plist";
  system.files.contents[agent] = "plist";
  launchAgain();
  EXPECT_FALSE(system.files.contents.contains(agent));
  EXPECT_EQ(system.login.state, LoginStatus::enabled);
}

TEST_F(LaunchTest, BrowserRowsTellTheStateOfInstalledBrowsers) {
  launchAgain();
  EXPECT_THAT(browserRows(delegate->link(), system.workspace), IsEmpty());
  for (const Browser browser : {Browser::safari, Browser::brave, Browser::chromium, Browser::firefox})
    system.workspace.installed[std::string(browser.bundleID())] = "/apps/x";
  system.workspace.addRunning(1, "Chromium", ActivationPolicy::regular, "org.chromium.Chromium");
  connect(Browser::firefox);
  const BrowserRow safari{"safari", "Safari", "Turn on in Safari Settings, Extensions", false};
  EXPECT_EQ(browserRows(delegate->link(), system.workspace).back(), safari);
  system.workspace.addRunning(2, "Safari", ActivationPolicy::regular, "com.apple.Safari");
  EXPECT_THAT(browserRows(delegate->link(), system.workspace),
              ElementsAre(BrowserRow{"brave", "Brave Browser", "Not running", false},
                          BrowserRow{"chromium", "Chromium", "Extension not connected", false},
                          BrowserRow{"firefox", "Firefox", "Connected", true}, safari));
  delegate->link().safariEnabled = true;
  EXPECT_EQ(browserRows(delegate->link(), system.workspace)[3], (BrowserRow{"safari", "Safari", "Connected", true}));
}

TEST_F(LaunchTest, TheSettingsModelGetsTheBrowserRows) {
  launchAgain();
  system.workspace.installed["com.brave.Browser"] = "/apps/x";
  delegate->settingsModel().refresh();
  EXPECT_THAT(*delegate->settingsModel().browsers,
              ElementsAre(BrowserRow{"brave", "Brave Browser", "Not running", false}));
}

TEST_F(LaunchTest, WhatItSaysAboutItselfNamesExtensionsAndTheirReportsButNoTabs) {
  system.bundle.info["CFBundleShortVersionString"] = "0.2.0";
  launchAgain();
  const auto connection = connect(Browser::firefox);
  connect(Browser::chrome)->extensionVersion.reset();  // has not introduced itself
  auto state = nlohmann::json::parse(delegate->state());
  EXPECT_EQ(state["version"], "0.2.0");
  EXPECT_EQ(state["extensions"], nlohmann::json::parse(R"([{"browser": "org.mozilla.firefox", "version": "1.0"}])"));
  delegate->link().handle(*connection, {{"type", "audible"}, {"tabId", 7}, {"title", "Secret"}, {"host", "a.example"}});
  EXPECT_EQ(delegate->state().find("Secret"), std::string::npos);
  EXPECT_EQ(delegate->state().find("a.example"), std::string::npos);
  state = nlohmann::json::parse(delegate->state());
  EXPECT_TRUE(state["extensions"][0].contains("lastReport")) << state;
}

}  // namespace
}  // namespace tollvane
