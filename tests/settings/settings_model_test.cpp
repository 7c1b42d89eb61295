#include "settings/settings_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/core_parts.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using namespace std::chrono_literals;

class SettingsModelTest : public testing::Test {
 protected:
  void install(Browser browser) { system.workspace.installed[std::string(browser.bundleID())] = "/apps/x"; }

  test::VirtualPlatform system;
  LoginItem loginItem{system.login, system.files, system.locations};
  SettingsModel model = test::makeSettingsModel(system, loginItem);
};

TEST_F(SettingsModelTest, BeginsWithTheStoredSettings) {
  EXPECT_FALSE(*model.markTabs);
  EXPECT_TRUE(*model.suggestExtension);
  EXPECT_FALSE(*model.startAtLogin);
  EXPECT_EQ(*model.loginNote, std::nullopt);
  EXPECT_THAT(*model.browsers, IsEmpty());
  EXPECT_THAT(*model.picks, IsEmpty());
  EXPECT_THAT(*model.ticked, IsEmpty());
  system.defaults.set("markTabs", true);
  system.defaults.set("suggestExtension", false);
  system.login.state = LoginStatus::enabled;
  const SettingsModel another = test::makeSettingsModel(system, loginItem);
  EXPECT_TRUE(*another.markTabs);
  EXPECT_FALSE(*another.suggestExtension);
  EXPECT_TRUE(*another.startAtLogin);
}

TEST_F(SettingsModelTest, MarkTabsIsStoredAndAnnouncedEvenIfItDoesNotChange) {
  int told = 0;
  model.onMarkTabsChanged = [&] {
    ++told;
    EXPECT_TRUE(Prefs(system.defaults).markTabs()) << "stored before anyone is told";
  };
  model.setMarkTabs(true);
  model.setMarkTabs(true);
  EXPECT_EQ(told, 2);
  EXPECT_TRUE(*model.markTabs);
}

TEST_F(SettingsModelTest, SuggestExtensionIsStoredAndNotAnnounced) {
  model.onMarkTabsChanged = [] { FAIL(); };
  model.setSuggestExtension(false);
  EXPECT_FALSE(*model.suggestExtension);
  EXPECT_FALSE(Prefs(system.defaults).suggestExtension());
}

TEST_F(SettingsModelTest, StartingAtLoginIsWhatTheSystemSays) {
  model.setStartAtLogin(true);
  EXPECT_TRUE(*model.startAtLogin);
  EXPECT_EQ(system.login.state, LoginStatus::enabled);
  model.setStartAtLogin(false);
  EXPECT_FALSE(*model.startAtLogin);
  EXPECT_EQ(system.login.state, LoginStatus::notRegistered);
}

TEST_F(SettingsModelTest, ARefusedChangeSpringsBackAndSaysWhy) {
  system.login.refusal = "Operation not permitted";
  model.setStartAtLogin(true);
  EXPECT_FALSE(*model.startAtLogin);
  EXPECT_EQ(*model.loginNote, "macOS didn't allow that change: Operation not permitted");
  model.refresh();
  EXPECT_EQ(*model.loginNote, "macOS didn't allow that change: Operation not permitted") << "survives a refresh";
  system.login.refusal.reset();
  model.setStartAtLogin(true);
  EXPECT_EQ(*model.loginNote, std::nullopt);
}

TEST_F(SettingsModelTest, ALoginItemThatRequiresApprovalIsOffAndSaysSo) {
  system.login.state = LoginStatus::requiresApproval;
  model.refresh();
  EXPECT_FALSE(*model.startAtLogin);
  EXPECT_EQ(*model.loginNote, "Approve Tollvane in System Settings, General, Login Items.");
}

TEST_F(SettingsModelTest, ARefusalMayBeReplacedByTheNeedForApproval) {
  system.login.state = LoginStatus::requiresApproval;
  system.login.refusal = "no";
  model.setStartAtLogin(true);
  EXPECT_EQ(*model.loginNote, "Approve Tollvane in System Settings, General, Login Items.");
}

TEST_F(SettingsModelTest, OfferedBrowsersAreNotListedAsRows) {
  model.browserStatus = [] {
    return std::vector<BrowserRow>{{"chrome", "Google Chrome", "Connected", true},
                                   {"brave", "Brave Browser", "Not running", false},
                                   {"safari", "Safari", "Connected", true}};
  };
  model.refresh();
  EXPECT_THAT(*model.browsers, ElementsAre(BrowserRow{"brave", "Brave Browser", "Not running", false},
                                           BrowserRow{"safari", "Safari", "Connected", true}));
}

TEST_F(SettingsModelTest, WithoutCallbacksThereAreNoRowsAndNothingIsConnected) {
  model.refresh();
  EXPECT_THAT(*model.browsers, IsEmpty());
  EXPECT_THAT(*model.picks, ElementsAre(ExtensionPick{Browser::chrome}, ExtensionPick{Browser::edge},
                                        ExtensionPick{Browser::firefox}));
}

TEST_F(SettingsModelTest, BrowsersThatAreInstalledAndNotConnectedAreTickedOnce) {
  install(Browser::chrome);
  install(Browser::firefox);
  model.isConnected = [](Browser browser) { return browser == Browser::firefox; };
  model.refresh();
  EXPECT_THAT(*model.ticked, ElementsAre("chrome"));
  EXPECT_THAT(*model.picks,
              ElementsAre(ExtensionPick{Browser::chrome, true, false}, ExtensionPick{Browser::edge, false, false},
                          ExtensionPick{Browser::firefox, true, true}));
  model.setTicked("chrome", false);
  model.refresh();
  EXPECT_THAT(*model.ticked, IsEmpty());
}

TEST_F(SettingsModelTest, TickedExtensionsAreOpenedInTheOrderOfThePicks) {
  system.bundle.info["TollvaneSite"] = "https://example.org";
  model.refresh();
  model.addSelected();
  EXPECT_TRUE(system.queue.idle());
  model.setTicked("firefox", true);
  model.setTicked("chrome", true);
  model.setTicked("safari", true);  // not offered
  model.addSelected();
  system.queue.advance(10s);
  EXPECT_THAT(system.workspace.opened, ElementsAre("https://example.org/go/chrome", "https://example.org/go/firefox"));
}

TEST_F(SettingsModelTest, EachAssignmentIsAnnouncedBeforeItTakesEffect) {
  std::vector<bool> before;
  model.objectWillChange = [&] { before.push_back(*model.suggestExtension); };
  model.setSuggestExtension(false);
  model.setSuggestExtension(false);
  EXPECT_THAT(before, ElementsAre(true, false));
}

TEST_F(SettingsModelTest, RefreshingDoesNotCallBeforeRefresh) {
  model.beforeRefresh = [](const std::function<void()>&) { FAIL(); };
  model.refresh();
}

}  // namespace
}  // namespace tollvane
