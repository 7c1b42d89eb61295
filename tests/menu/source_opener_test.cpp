#include "menu/source_opener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/json_value.h"
#include "tests/support/recording_connection.h"
#include "tests/virtual/core_parts.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

class SourceOpenerTest : public testing::Test {
 protected:
  SoundEvent tabSound(Browser browser = Browser::firefox) const {
    SoundEvent event(system.clock.now(), browser.appName(), kind::startedPlayingAudio);
    event.browser = browser;
    event.tabId = 7;
    event.tabTitle = "Inbox";
    return event;
  }
  void open(std::string_view app) { opener->open(SoundEvent(system.clock.now(), app, kind::alertSound)); }
  void runFirefox() { system.workspace.addRunning(10, "Firefox", ActivationPolicy::regular, "org.mozilla.firefox"); }
  std::shared_ptr<test::RecordingConnection> connectFirefox() {
    link.connections.push_back(std::make_shared<test::RecordingConnection>(Browser::firefox));
    return std::static_pointer_cast<test::RecordingConnection>(link.connections.back());
  }
  const std::vector<Alert>& alerts() const { return system.application.alerts; }

  test::VirtualPlatform system;
  Resolver resolver{system.processes, system.workspace, system.locations, system.files};
  Paths paths{system.locations, system.files};
  BrowserLink link = test::makeLink(system, paths);
  std::unique_ptr<SourceOpener> opener = std::make_unique<SourceOpener>(system.workspace, system.application,
                                                                        system.application, macWording, resolver, link);
};

TEST_F(SourceOpenerTest, ARunningApplicationComesForwardWithoutAnAlert) {
  system.workspace.addRunning(10, "Mail");
  open("Mail");
  EXPECT_THAT(system.workspace.activated, ElementsAre(10));
  EXPECT_THAT(alerts(), IsEmpty());
}

TEST_F(SourceOpenerTest, TheFirstRegularApplicationOfExactlyThatNameComesForward) {
  system.workspace.addRunning(10, "mail");
  system.workspace.addRunning(11, std::nullopt);
  system.workspace.addRunning(12, "Mail", ActivationPolicy::accessory);
  system.workspace.addRunning(13, "Mail");
  system.workspace.addRunning(14, "Mail");
  open("Mail");
  EXPECT_THAT(system.workspace.activated, ElementsAre(13));
}

TEST_F(SourceOpenerTest, OfSeveralProcessesTheOneThatMadeTheSoundComesForward) {
  for (const Pid pid : {10, 11, 12}) system.workspace.addRunning(pid, "Terminal");
  system.workspace.running[1].application.startTime = 5;
  SoundEvent event(system.clock.now(), "Terminal", kind::startedPlayingAudio);
  event.maker = system.workspace.running[1].application;
  opener->open(event);
  EXPECT_THAT(system.workspace.activated, ElementsAre(11));
  system.workspace.running[1].application.startTime = 6;  // another process has got its number
  opener->open(event);
  EXPECT_THAT(system.workspace.activated, ElementsAre(11, 10));
}

TEST_F(SourceOpenerTest, AnInstalledApplicationThatIsNotOpenIsOffered) {
  system.workspace.displayNames["/apps/mail.desktop"] = "Mail";
  open("Mail");
  EXPECT_THAT(alerts(), ElementsAre(Alert{
                            "Mail is closed", "Mail made this sound but isn't open anymore.", {"Open Mail", "OK"}}));
  EXPECT_THAT(system.workspace.opened, IsEmpty());
}

TEST_F(SourceOpenerTest, OpenLaunchesTheApplicationAndOKDoesNot) {
  system.workspace.displayNames["/apps/mail.desktop"] = "Mail";
  open("Mail");
  open("Mail");
  system.application.answers[0](1);
  EXPECT_THAT(system.workspace.opened, IsEmpty());
  system.application.answers[1](0);
  EXPECT_THAT(system.workspace.opened, ElementsAre("/apps/mail.desktop"));
}

TEST_F(SourceOpenerTest, ABackgroundPartHasNothingToOpen) {
  system.workspace.addRunning(12, "soundhelperd", ActivationPolicy::accessory);
  open("soundhelperd");
  EXPECT_THAT(alerts(),
              ElementsAre(Alert{"Nothing to open",
                                "soundhelperd is a background part of macOS, so there is no window to bring forward.",
                                {"OK"}}));
}

TEST_F(SourceOpenerTest, AnApplicationWithoutAWindowHasNothingToOpen) {
  system.workspace.addRunning(10, "Mail");
  system.workspace.windowless.insert(10);
  open("Mail");
  ASSERT_EQ(alerts().size(), 1u);
  EXPECT_EQ(alerts()[0].messageText, "Nothing to open");
}

TEST_F(SourceOpenerTest, AnInstalledApplicationWithoutAWindowIsStartedAgainToShowOne) {
  system.workspace.displayNames["/apps/mail.desktop"] = "Mail";
  system.workspace.addRunning(10, "Mail");
  system.workspace.windowless.insert(10);
  open("Mail");
  EXPECT_THAT(system.workspace.opened, ElementsAre("/apps/mail.desktop"));
  EXPECT_THAT(alerts(), IsEmpty());
}

TEST_F(SourceOpenerTest, AnAlertSaysThatAnApplicationCouldNotBeStarted) {
  system.workspace.displayNames["/apps/mail.desktop"] = "Mail";
  system.workspace.broken.insert("/apps/mail.desktop");
  open("Mail");
  system.application.answers[0](0);
  EXPECT_EQ(alerts().back(), (Alert{"Can't open Mail", "Mail is installed but couldn't be started.", {"OK"}}));
}

TEST_F(SourceOpenerTest, AnApplicationThatEndsBeforeItCouldComeForwardIsOffered) {
  system.workspace.displayNames["/apps/mail.desktop"] = "Mail";
  system.workspace.addRunning(10, "Mail");
  system.workspace.ending.insert(10);
  open("Mail");
  ASSERT_EQ(alerts().size(), 1u);
  EXPECT_EQ(alerts()[0].messageText, "Mail is closed");
}

TEST_F(SourceOpenerTest, ABrowserThatWasQuitIsClosedAndItsExtensionIsNotAsked) {
  const auto firefox = connectFirefox();
  opener->open(tabSound());
  EXPECT_THAT(alerts(), ElementsAre(Alert{"Firefox is closed",
                                          "The tab that made this sound (Inbox) is gone because Firefox has been "
                                          "quit since.",
                                          {"OK"}}));
  EXPECT_THAT(firefox->sent, IsEmpty());
}

TEST_F(SourceOpenerTest, ATabThatCameForwardBringsItsBrowserForward) {
  runFirefox();
  const auto firefox = connectFirefox();
  opener->open(tabSound());
  EXPECT_THAT(firefox->sent, ElementsAre(Message{{"type", "focus"}, {"req", 1}, {"tabId", 7}}));
  EXPECT_THAT(system.workspace.activated, IsEmpty());
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1}, {"ok", true}});
  EXPECT_THAT(system.workspace.activated, ElementsAre(10));
  EXPECT_THAT(system.workspace.titles, ElementsAre("Inbox")) << "of its windows, the tab's";
  EXPECT_THAT(alerts(), IsEmpty());
}

TEST_F(SourceOpenerTest, OfABrowsersProcessesTheOneThatMadeTheSoundComesForward) {
  runFirefox();
  system.workspace.addRunning(11, "Firefox", ActivationPolicy::regular, "org.mozilla.firefox");
  const auto firefox = connectFirefox();
  SoundEvent event = tabSound();
  event.maker = system.workspace.running[1].application;
  opener->open(event);
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1}, {"ok", true}});
  EXPECT_THAT(system.workspace.activated, ElementsAre(11));
}

TEST_F(SourceOpenerTest, OfTwoEditionsTheOneThatHasTheTabComesForward) {
  runFirefox();
  system.workspace.addRunning(11, "Firefox Nightly", ActivationPolicy::regular, "org.mozilla.nightly");
  const auto firefox = connectFirefox();
  const auto nightly = connectFirefox();
  nightly->bundleID = "org.mozilla.nightly";
  opener->open(tabSound());
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1}, {"ok", false}});
  link.handle(*nightly, {{"type", "focusResult"}, {"req", 1}, {"ok", true}});
  EXPECT_THAT(system.workspace.activated, ElementsAre(11));
  EXPECT_THAT(alerts(), IsEmpty());
}

TEST_F(SourceOpenerTest, AnEditionThatRunsAloneIsAsked) {
  system.workspace.addRunning(11, "Firefox Nightly", ActivationPolicy::regular, "org.mozilla.nightly");
  const auto nightly = connectFirefox();
  nightly->bundleID = "org.mozilla.nightly";
  opener->open(tabSound());
  EXPECT_THAT(nightly->sent, testing::SizeIs(1));
  EXPECT_THAT(alerts(), IsEmpty());
}

TEST_F(SourceOpenerTest, ABrowserThatQuitBeforeItCouldComeForwardCausesNoAlert) {
  runFirefox();
  const auto firefox = connectFirefox();
  opener->open(tabSound());
  system.workspace.running.clear();
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1}, {"ok", true}});
  EXPECT_THAT(system.workspace.activated, IsEmpty());
  EXPECT_THAT(alerts(), IsEmpty());
}

TEST_F(SourceOpenerTest, AnAlertSaysThatTheTabIsClosed) {
  runFirefox();
  const auto firefox = connectFirefox();
  opener->open(tabSound());
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1}, {"ok", false}});
  EXPECT_THAT(alerts(), ElementsAre(Alert{"That tab is closed",
                                          "The Firefox tab that made this sound (Inbox) has been closed, so there is "
                                          "nothing to go back to.",
                                          {"OK"}}));
}

TEST_F(SourceOpenerTest, AfterTwoAndAHalfSecondsAnAlertSaysThatTheExtensionDoesNotAnswer) {
  runFirefox();
  connectFirefox();
  opener->open(tabSound());
  system.queue.advance(2499ms);
  EXPECT_THAT(alerts(), IsEmpty());
  system.queue.advance(1ms);
  EXPECT_THAT(alerts(), ElementsAre(Alert{"Can't reach Firefox",
                                          "The Tollvane extension in Firefox isn't responding, so the tab can't be "
                                          "brought forward. Check that the extension is installed and turned on.",
                                          {"OK"}}));
}

// Every sound with a tab id has a label, so the alert's text never needs the words "that tab".
TEST_F(SourceOpenerTest, ATabWithoutATitleIsCalledABrowserTab) {
  SoundEvent event = tabSound();
  event.tabTitle.reset();
  opener->open(event);
  ASSERT_EQ(alerts().size(), 1u);
  EXPECT_EQ(alerts()[0].informativeText,
            "The tab that made this sound (a browser tab) is gone because Firefox has been quit since.");
}

TEST_F(SourceOpenerTest, ABrowserSoundWithoutATabIdOpensTheBrowserItself) {
  runFirefox();
  SoundEvent event = tabSound();
  event.tabId.reset();
  opener->open(event);
  EXPECT_THAT(system.workspace.activated, ElementsAre(10));
}

TEST_F(SourceOpenerTest, TollvaneIsInFrontBeforeAnyAlertIsShown) {
  open("soundhelperd");
  opener->open(tabSound());
  EXPECT_EQ(alerts().size(), 2u);
  EXPECT_EQ(system.application.alertsBehindOthers, 0);
}

TEST_F(SourceOpenerTest, AnAnswerAfterTheOpenersEndStillBringsTheBrowserForward) {
  runFirefox();
  const auto firefox = connectFirefox();
  opener->open(tabSound());
  opener->open(tabSound());
  opener.reset();
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1}, {"ok", false}});
  EXPECT_THAT(alerts(), IsEmpty());
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 2}, {"ok", true}});
  EXPECT_THAT(system.workspace.activated, ElementsAre(10));
}

}  // namespace
}  // namespace tollvane
