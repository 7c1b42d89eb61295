// What an item of the sound menu does if it is chosen, from the click to the effect outside the program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/app_delegate.h"
#include "support/json_value.h"
#include "tests/support/recording_connection.h"
#include "tests/virtual/log_lines.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

class MenuCommandsTest : public testing::Test {
 protected:
  MenuCommandsTest() { delegate->applicationDidFinishLaunching(); }

  void hear(const std::string& app, Pid pid) { system.children.last().print(test::outputStarted(app, pid)); }
  void choose(std::string_view title) {
    const Menu menu = system.statusBar.openMenu();
    for (const MenuItem& item : menu.items) {
      const bool isWanted = item.title == title || plainText(item.attributedTitle).find(title) != std::string::npos;
      if (isWanted) return item.action(item);
    }
    FAIL() << "no item " << title;
  }
  const std::vector<std::shared_ptr<SoundEvent>>& events() { return delegate->recorder().events; }

  test::VirtualPlatform system;
  std::unique_ptr<AppDelegate> delegate = std::make_unique<AppDelegate>(system.platform());
};

TEST_F(MenuCommandsTest, TheMenuIsMadeAnewAtEachOpening) {
  EXPECT_EQ(system.statusBar.openMenu().items[0].title, "No sounds yet");
  hear("Mail", 10);
  EXPECT_EQ(system.statusBar.openMenu().items[0].title, "Recent sounds · 1 unseen");
}

TEST_F(MenuCommandsTest, OpeningTheMenuMarksNothingAsSeen) {
  hear("Mail", 10);
  system.statusBar.openMenu();
  EXPECT_FALSE(events()[0]->seen);
  EXPECT_EQ(system.statusBar.shown.symbolName, "bell.fill");
}

TEST_F(MenuCommandsTest, OpeningASourceMarksItSeenAndEmptiesTheBell) {
  system.workspace.addRunning(10, "Mail");
  hear("Mail", 10);
  choose("Mail");
  EXPECT_TRUE(events()[0]->seen);
  EXPECT_EQ(system.statusBar.shown.symbolName, "bell");
  EXPECT_THAT(system.workspace.activated, ElementsAre(10));
}

TEST_F(MenuCommandsTest, ASourceThatCannotBeReachedIsStillMarkedSeen) {
  hear("soundhelperd", 10);
  choose("soundhelperd");
  EXPECT_TRUE(events()[0]->seen);
  EXPECT_EQ(system.application.alerts.size(), 1u);
}

TEST_F(MenuCommandsTest, AMenuItemWithoutASoundIsIgnored) {
  hear("Mail", 10);
  delegate->openSource(MenuItem{});
  MenuItem stranger;
  stranger.representedObject = std::string("Mail");
  delegate->openSource(stranger);
  stranger.representedObject = std::shared_ptr<SoundEvent>();
  delegate->openSource(stranger);
  EXPECT_FALSE(events()[0]->seen);
  EXPECT_THAT(system.application.alerts, IsEmpty());
}

TEST_F(MenuCommandsTest, ASoundThatWasClearedWhileTheMenuWasOpenStillLeadsToItsSource) {
  system.workspace.addRunning(10, "Mail");
  hear("Mail", 10);
  const Menu open = system.statusBar.openMenu();
  delegate->clearList();
  open.items[1].action(open.items[1]);
  EXPECT_THAT(system.workspace.activated, ElementsAre(10));
}

TEST_F(MenuCommandsTest, AllCanBeMarkedAsSeen) {
  hear("Mail", 10);
  hear("Chat", 11);
  choose("Mark all as seen");
  EXPECT_TRUE(events()[0]->seen && events()[1]->seen);
  EXPECT_EQ(system.statusBar.shown.symbolName, "bell");
}

TEST_F(MenuCommandsTest, ClearingEmptiesTheListButNotTheHistory) {
  hear("Mail", 10);
  delegate->recorder().pendingTabs.push_back({system.clock.now(), Browser::firefox, "t", "h", 1});
  system.queue.runDue();
  const auto before = system.files.contents;
  choose("Clear list");
  EXPECT_THAT(events(), IsEmpty());
  EXPECT_THAT(delegate->recorder().pendingTabs, IsEmpty());
  EXPECT_EQ(system.statusBar.shown.toolTip, "Tollvane");
  EXPECT_EQ(system.files.contents, before);
  EXPECT_FALSE(before.empty());
}

TEST_F(MenuCommandsTest, AHistoryThatDoesNotExistIsMadeBeforeItIsOpened) {
  choose("Open full history");
  ASSERT_EQ(system.workspace.opened.size(), 1u);
  const std::filesystem::path history = system.workspace.opened[0];
  EXPECT_EQ(history.filename(), "history.txt");
  EXPECT_EQ(system.files.contents.at(history), "");
}

TEST_F(MenuCommandsTest, AHistoryThatExistsIsOpenedAsItIs) {
  hear("Mail", 10);
  system.queue.runDue();
  const auto before = system.files.contents;
  choose("Open full history");
  EXPECT_EQ(system.files.contents, before);
  EXPECT_THAT(system.workspace.opened, ElementsAre(before.begin()->first.string()));
}

TEST_F(MenuCommandsTest, OpeningAHistoryThatCannotBeMadeIsStillTried) {
  system.files.full = true;
  choose("Open full history");
  EXPECT_EQ(system.workspace.opened.size(), 1u);
}

TEST_F(MenuCommandsTest, TheHintOpensTheStoreInItsBrowser) {
  system.bundle.info["TollvaneSite"] = "https://example.org";
  system.workspace.installed["org.mozilla.firefox"] = "/apps/firefox.desktop";
  system.workspace.displayNames["/apps/firefox.desktop"] = "Firefox";
  hear("Firefox", 10);
  choose("Add the free extension");
  system.queue.runDue();
  EXPECT_THAT(system.workspace.opened, ElementsAre("https://example.org/go/firefox in /apps/firefox.desktop"));
}

TEST_F(MenuCommandsTest, SafarisHintOpensItsSettings) {
  hear("Safari", 10);
  choose("Turn on Tollvane in Safari");
  EXPECT_THAT(system.safari.preferencesShown, ElementsAre("com.quarnel.tollvane.safari"));
}

TEST_F(MenuCommandsTest, AHintThatNamesNoBrowserIsIgnored) {
  MenuItem stranger;
  delegate->openExtensionStore(stranger);
  stranger.representedObject = std::string("netscape");
  delegate->openExtensionStore(stranger);
  system.queue.runDue();
  EXPECT_THAT(system.workspace.opened, IsEmpty());
}

TEST_F(MenuCommandsTest, AConnectedExtensionIsNotOffered) {
  hear("Firefox", 10);
  delegate->link().connections.push_back(std::make_shared<test::RecordingConnection>(Browser::firefox));
  for (const MenuItem& item : system.statusBar.openMenu().items)
    EXPECT_FALSE(plainText(item.attributedTitle).ends_with("›"));
}

TEST_F(MenuCommandsTest, AHintThatIsTurnedOffIsNotShown) {
  hear("Firefox", 10);
  system.defaults.set("suggestExtension", false);
  for (const MenuItem& item : system.statusBar.openMenu().items)
    EXPECT_FALSE(plainText(item.attributedTitle).ends_with("›"));
}

TEST_F(MenuCommandsTest, AnAvailableUpdateOpensItsPage) {
  system.bundle.info["CFBundleShortVersionString"] = "1.0";
  delegate->openUpdate();
  EXPECT_THAT(system.workspace.opened, IsEmpty());
  delegate->updater().latest = Release{"2.0", "https://example.org/2.0", std::nullopt, ""};
  choose("Update available: version 2.0…");
  EXPECT_THAT(system.workspace.opened, ElementsAre("https://example.org/2.0"));
}

TEST_F(MenuCommandsTest, AManualCheckIsAnsweredFourSecondsLaterInFront) {
  system.bundle.info["CFBundleShortVersionString"] = "1.0";
  choose("Check for updates");
  system.http.answer(HttpResponse{200, R"({"version":"1.0"})"});
  system.queue.advance(3999ms);
  EXPECT_THAT(system.application.alerts, IsEmpty());
  system.queue.advance(1ms);
  ASSERT_EQ(system.application.alerts.size(), 1u);
  EXPECT_EQ(system.application.alerts[0].messageText, "You're up to date");
  EXPECT_EQ(system.application.alertsBehindOthers, 0);
}

TEST_F(MenuCommandsTest, SeveralChecksInARowGetOneAnswer) {
  for (int i = 0; i < 3; ++i) choose("Check for updates");
  system.queue.advance(4s);
  choose("Check for updates");
  system.queue.advance(10s);
  ASSERT_EQ(system.application.alerts.size(), 1u);
  system.application.answers[0](0);
  choose("Check for updates");
  system.queue.advance(4s);
  EXPECT_EQ(system.application.alerts.size(), 2u);
}

TEST_F(MenuCommandsTest, ABuildWithoutASiteSaysAtOnceThatItDoesNotLook) {
  system.bundle.info.erase("TollvaneSite");
  choose("Check for updates");
  system.queue.runDue();
  ASSERT_EQ(system.application.alerts.size(), 1u);
  EXPECT_EQ(system.application.alerts[0].messageText, "This version doesn't look for updates");
}

TEST_F(MenuCommandsTest, QuitAsksTheApplicationToEnd) {
  choose("Quit Tollvane");
  EXPECT_TRUE(system.application.terminated);
}

TEST_F(MenuCommandsTest, AMenuThatOutlivesItsDelegateDoesNothing) {
  hear("Mail", 10);
  const Menu open = system.statusBar.openMenu();
  delegate.reset();
  for (const MenuItem& item : open.items)
    if (item.action) item.action(item);
  EXPECT_FALSE(system.application.terminated);
  EXPECT_THAT(system.application.alerts, IsEmpty());
}

}  // namespace
}  // namespace tollvane
