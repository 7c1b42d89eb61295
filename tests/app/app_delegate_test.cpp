#include "app/app_delegate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/json_value.h"
#include "tests/support/recording_connection.h"
#include "tests/virtual/log_lines.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

class AppDelegateTest : public testing::Test {
 protected:
  test::VirtualPlatform system;
  std::unique_ptr<AppDelegate> delegate = std::make_unique<AppDelegate>(system.platform());
};

TEST_F(AppDelegateTest, NothingHappensBeforeTheLaunch) {
  EXPECT_EQ(system.statusBar.itemsMade, 0);
  EXPECT_EQ(system.children.attempts, 0);
}

TEST_F(AppDelegateTest, LaunchShowsTheHollowBellAndListens) {
  delegate->applicationDidFinishLaunching();
  EXPECT_EQ(system.statusBar.itemsMade, 1);
  EXPECT_EQ(system.statusBar.shown.symbolName, "bell");
  EXPECT_EQ(system.statusBar.shown.accessibilityDescription, "Tollvane");
  EXPECT_EQ(system.statusBar.shown.toolTip, "Tollvane");
  EXPECT_EQ(system.statusBar.shown.menuDelegate, delegate.get());
  EXPECT_EQ(system.children.programs.size(), 1u);
}

TEST_F(AppDelegateTest, ASoundFillsTheBellAndGoesToTheHistory) {
  delegate->applicationDidFinishLaunching();
  system.workspace.addRunning(4242, "Mail");
  system.children.last().print(test::outputStarted("mail-bin", 4242));
  EXPECT_EQ(system.statusBar.shown.symbolName, "bell.fill");
  EXPECT_EQ(system.statusBar.shown.toolTip, "Last sound: Mail at 2:05:09 PM · 1 unseen");
  system.queue.runDue();
  EXPECT_EQ(system.files.contents.begin()->second, "2025-01-31 14:05:09\tMail\tstarted playing audio\t\n");
}

TEST_F(AppDelegateTest, AReportFromAConnectionGivesTheSoundItsTabAndRefreshesTheBell) {
  delegate->applicationDidFinishLaunching();
  system.children.last().print(test::outputStarted("Firefox", 4242));
  test::RecordingConnection firefox(Browser::firefox);
  delegate->link().onTab(firefox, {{"title", "Inbox"}, {"host", "h"}, {"tabId", 3}});
  EXPECT_EQ(system.statusBar.shown.toolTip, "Last sound: Inbox  (h) at 2:05:09 PM · 1 unseen");
}

TEST_F(AppDelegateTest, AReportFromAnUnidentifiedConnectionIsIgnored) {
  delegate->applicationDidFinishLaunching();
  test::RecordingConnection nobody(Browser::firefox);
  nobody.bundleID.reset();
  delegate->link().onTab(nobody, {{"title", "Inbox"}});
  EXPECT_TRUE(delegate->recorder().pendingTabs.empty());
}

TEST_F(AppDelegateTest, ASafariSoundWithoutTabAsksSafariOnceAndChromeNever) {
  delegate->applicationDidFinishLaunching();
  delegate->link().safariEnabled = true;
  const auto chrome = std::make_shared<test::RecordingConnection>(Browser::chrome);
  delegate->link().connections = {chrome};
  system.children.last().print(test::outputStarted("Safari", 4242) + test::outputStarted("Google Chrome", 4243));
  EXPECT_EQ(system.safari.sent,
            std::vector<std::string>({R"(tollvane com.quarnel.tollvane.safari {"type":"whichAudible"})"}));
  EXPECT_TRUE(chrome->sent.empty());
}

TEST_F(AppDelegateTest, ExtensionsAreSentExactlyOneSetting) {
  delegate->applicationDidFinishLaunching();
  EXPECT_EQ(delegate->link().settings(), (Message{{"markTabs", false}}));
  system.defaults.set("markTabs", true);
  EXPECT_EQ(delegate->link().settings(), (Message{{"markTabs", true}}));
}

TEST_F(AppDelegateTest, TerminationStopsTheLogToolForGood) {
  delegate->applicationDidFinishLaunching();
  delegate->applicationWillTerminate();
  EXPECT_TRUE(system.children.last().terminationAsked);
  system.queue.advance(1h);
  EXPECT_EQ(system.children.attempts, 1);
}

TEST_F(AppDelegateTest, TerminationWritesTheHistorysLastLines) {
  delegate->applicationDidFinishLaunching();
  system.children.last().print(test::outputStarted("Firefox", 4242));
  delegate->applicationWillTerminate();
  EXPECT_TRUE(system.files.contents.contains("/home/user/Application Support/Tollvane/history.txt"));
}

TEST_F(AppDelegateTest, TerminationClosesTheConnectionsToBrowsers) {
  delegate->applicationDidFinishLaunching();
  const auto connection = std::make_shared<test::RecordingConnection>(Browser::firefox);
  delegate->link().connections.push_back(connection);
  delegate->applicationWillTerminate();
  EXPECT_THAT(delegate->link().connections, testing::IsEmpty());
}

TEST_F(AppDelegateTest, CallbacksDoNothingOnceTheDelegateIsGone) {
  delegate->applicationDidFinishLaunching();
  const auto program = system.children.programs.back();
  const auto onTab = delegate->link().onTab;
  const auto onChange = delegate->recorder().onChange;
  program->print(test::outputStarted("Mail", 4242));
  delegate.reset();
  system.statusBar.shown = {};
  program->print(test::outputStarted("Chat", 4243));
  test::RecordingConnection firefox(Browser::firefox);
  onTab(firefox, {{"title", "Inbox"}});
  onChange();
  system.queue.advance(1h);
  EXPECT_EQ(system.statusBar.shown.symbolName, "");
  EXPECT_TRUE(system.files.contents.empty());
}

TEST_F(AppDelegateTest, TheVersionIsTheBundlesOrDev) {
  EXPECT_EQ(delegate->version(), "dev");
  system.bundle.info["CFBundleShortVersionString"] = "1.2.3";
  EXPECT_EQ(delegate->version(), "1.2.3");
}

TEST_F(AppDelegateTest, AMissingStatusItemIsFatal) {
  system.statusBar.broken = true;
  EXPECT_DEATH(delegate->applicationDidFinishLaunching(), "Tollvane: there is no status item");
}

}  // namespace
}  // namespace tollvane
