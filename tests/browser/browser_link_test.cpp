#include "browser/browser_link.h"

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

class BrowserLinkTest : public testing::Test {
 protected:
  BrowserLinkTest() {
    link.settings = [] { return Message{{"markTabs", true}}; };
    link.onChange = [this] { ++changes; };
  }

  std::shared_ptr<test::RecordingConnection> connect(Browser browser) {
    link.connections.push_back(std::make_shared<test::RecordingConnection>(browser));
    return std::static_pointer_cast<test::RecordingConnection>(link.connections.back());
  }
  std::shared_ptr<test::RecordingConnection> connectStranger() {
    auto stranger = connect(Browser::firefox);
    stranger->bundleID.reset();
    stranger->extensionVersion.reset();
    return stranger;
  }
  FocusRequests::Completion into(std::vector<FocusResult>& results) {
    return [&results](FocusResult result, auto) { results.push_back(result); };
  }

  test::VirtualPlatform system;
  Paths paths{system.locations, system.files};
  BrowserLink link = test::makeLink(system, paths);
  int changes = 0;
};

const Message settings = {{"type", "settings"}, {"markTabs", true}};

TEST_F(BrowserLinkTest, ABridgeTellsWhichBrowserStartedIt) {
  const auto bridge = connectStranger();
  link.handle(*bridge, {{"type", "bridge"}, {"bundleID", "org.mozilla.firefox"}});
  EXPECT_EQ(bridge->browser(), Browser(Browser::firefox));
  EXPECT_EQ(changes, 1);
  EXPECT_FALSE(link.isConnected(Browser::firefox));
  link.handle(*bridge, {{"type", "bridge"}, {"bundleID", 7}});
  EXPECT_EQ(bridge->bundleID, std::nullopt);
  EXPECT_EQ(changes, 2);
}

TEST_F(BrowserLinkTest, AHelloMakesAConnectionReadyAndIsAnsweredWithTheSettings) {
  const auto bridge = connectStranger();
  bridge->bundleID = "org.mozilla.firefox";
  link.handle(*bridge, {{"type", "hello"}, {"version", "1.2"}});
  EXPECT_EQ(bridge->extensionVersion, "1.2");
  EXPECT_THAT(bridge->sent, ElementsAre(settings));
  EXPECT_TRUE(link.isConnected(Browser::firefox));
  EXPECT_EQ(changes, 1);
}

TEST_F(BrowserLinkTest, AHelloWithoutVersionIsVersionQuestionMark) {
  const auto bridge = connectStranger();
  link.handle(*bridge, {{"type", "hello"}});
  EXPECT_EQ(bridge->extensionVersion, "?");
  link.handle(*bridge, {{"type", "hello"}, {"version", 3}});
  EXPECT_EQ(bridge->extensionVersion, "?");
}

TEST_F(BrowserLinkTest, AHelloBeforeTheBridgeIsAnsweredOnTheSocket) {
  const auto bridge = connectStranger();
  link.handle(*bridge, {{"type", "hello"}, {"version", "1"}});
  EXPECT_THAT(bridge->sent, ElementsAre(settings));
  EXPECT_THAT(system.safari.sent, IsEmpty());
}

TEST_F(BrowserLinkTest, WithoutSettingsThereIsStillAnAnswer) {
  BrowserLink bare = test::makeLink(system, paths);
  test::RecordingConnection bridge(Browser::firefox);
  bare.handle(bridge, {{"type", "hello"}});
  EXPECT_THAT(bridge.sent, ElementsAre(Message{{"type", "settings"}}));
}

TEST_F(BrowserLinkTest, AReportOfAnAudibleTabIsPassedOnWhole) {
  const auto firefox = connect(Browser::firefox);
  std::vector<Message> reports;
  link.onTab = [&](BrowserConnection& from, const Message& report) {
    EXPECT_EQ(&from, firefox.get());
    reports.push_back(report);
  };
  const Message report = {{"type", "audible"}, {"tabId", 1}, {"more", "x"}};
  link.handle(*firefox, report);
  EXPECT_THAT(reports, ElementsAre(report));
}

TEST_F(BrowserLinkTest, UnknownMessagesAreIgnored) {
  const auto firefox = connect(Browser::firefox);
  for (const Message& message : {Message{{"type", 7}}, Message::object(), Message{{"type", "dance"}},
                                 Message{{"type", nullptr}}, Message{{"type", "focusResult"}, {"req", "1"}}})
    link.handle(*firefox, message);
  EXPECT_THAT(firefox->sent, IsEmpty());
  EXPECT_EQ(changes, 0);
}

TEST_F(BrowserLinkTest, TheReadyConnectionsOfABrowserAreAskedInTheirOrder) {
  const auto first = connect(Browser::chrome);
  const auto firefox = connect(Browser::firefox);
  const auto second = connect(Browser::chrome);
  const auto notReady = connect(Browser::chrome);
  notReady->extensionVersion.reset();
  link.askWhichTabIsAudible(Browser::chrome);
  EXPECT_THAT(first->sent, ElementsAre(Message{{"type", "whichAudible"}}));
  EXPECT_THAT(second->sent, ElementsAre(Message{{"type", "whichAudible"}}));
  EXPECT_THAT(firefox->sent, IsEmpty());
  EXPECT_THAT(notReady->sent, IsEmpty());
}

TEST_F(BrowserLinkTest, RequestsAreNumberedAndAnswersFindTheirOwn) {
  const auto firefox = connect(Browser::firefox);
  std::vector<FocusResult> first, second;
  link.focus(10, Browser::firefox, into(first));
  link.focus(11, Browser::firefox, into(second));
  EXPECT_THAT(firefox->sent, ElementsAre(Message{{"type", "focus"}, {"req", 1}, {"tabId", 10}},
                                         Message{{"type", "focus"}, {"req", 2}, {"tabId", 11}}));
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 2}, {"ok", true}});
  EXPECT_THAT(first, IsEmpty());
  EXPECT_THAT(second, ElementsAre(FocusResult::focused));
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1}, {"ok", false}});
  EXPECT_THAT(first, ElementsAre(FocusResult::tabClosed));
}

TEST_F(BrowserLinkTest, OnlyTheFirstReadyConnectionIsAskedToFocus) {
  connect(Browser::firefox)->extensionVersion.reset();
  const auto ready = connect(Browser::firefox);
  const auto other = connect(Browser::firefox);
  link.focus(10, Browser::firefox, [](FocusResult, auto) {});
  EXPECT_EQ(ready->sent.size(), 1u);
  EXPECT_THAT(other->sent, IsEmpty());
}

TEST_F(BrowserLinkTest, AnAnswerWithoutATruthValueMeansClosed) {
  const auto firefox = connect(Browser::firefox);
  std::vector<FocusResult> results;
  for (const Message& ok : {Message(nullptr), Message(1), Message("true")}) {
    link.focus(1, Browser::firefox, into(results));
    link.handle(*firefox, {{"type", "focusResult"}, {"req", results.size() + 1}, {"ok", ok}});
  }
  link.focus(1, Browser::firefox, into(results));
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 4}});
  EXPECT_THAT(results, testing::AllOf(testing::SizeIs(4), testing::Each(FocusResult::tabClosed)));
}

TEST_F(BrowserLinkTest, ARequestNumberMustBeWhole) {
  const auto firefox = connect(Browser::firefox);
  std::vector<FocusResult> results;
  link.focus(1, Browser::firefox, into(results));
  for (const Message& req : {Message(1.5), Message(1e300), Message("1"), Message(true), Message(0)})
    link.handle(*firefox, {{"type", "focusResult"}, {"req", req}, {"ok", true}});
  EXPECT_THAT(results, IsEmpty());
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1.0}, {"ok", true}});
  EXPECT_THAT(results, ElementsAre(FocusResult::focused));
}

TEST_F(BrowserLinkTest, AnUnknownOrRepeatedAnswerDoesNothing) {
  const auto firefox = connect(Browser::firefox);
  std::vector<FocusResult> results;
  link.focus(1, Browser::firefox, into(results));
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 99}, {"ok", true}});
  EXPECT_THAT(results, IsEmpty());
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1}, {"ok", true}});
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1}, {"ok", false}});
  EXPECT_THAT(results, ElementsAre(FocusResult::focused));
}

TEST_F(BrowserLinkTest, NoAnswerIsUnreachableAfterTwoAndAHalfSecondsAndALateOneIsIgnored) {
  const auto firefox = connect(Browser::firefox);
  std::vector<FocusResult> results;
  link.focus(1, Browser::firefox, into(results));
  system.queue.advance(2499ms);
  EXPECT_THAT(results, IsEmpty());
  system.queue.advance(1ms);
  EXPECT_THAT(results, ElementsAre(FocusResult::unreachable));
  system.queue.advance(500ms);
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1}, {"ok", true}});
  EXPECT_EQ(results.size(), 1u);
}

TEST_F(BrowserLinkTest, WithoutAReadyConnectionTheTabIsUnreachableAtOnceAndTheNumberIsUsedUp) {
  std::vector<FocusResult> results;
  const auto firefox = connect(Browser::firefox);
  firefox->extensionVersion.reset();
  link.focus(1, Browser::firefox, into(results));
  EXPECT_THAT(results, ElementsAre(FocusResult::unreachable));
  EXPECT_THAT(firefox->sent, IsEmpty());
  firefox->extensionVersion = "1";
  link.focus(1, Browser::firefox, into(results));
  EXPECT_EQ(firefox->sent.back()["req"], 2);
}

TEST_F(BrowserLinkTest, ACompletionMayAskAgain) {
  const auto firefox = connect(Browser::firefox);
  std::vector<FocusResult> results;
  link.focus(1, Browser::firefox, [&](FocusResult, auto) { link.focus(2, Browser::firefox, into(results)); });
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 1}, {"ok", true}});
  link.handle(*firefox, {{"type", "focusResult"}, {"req", 2}, {"ok", true}});
  EXPECT_THAT(results, ElementsAre(FocusResult::focused));
}

TEST_F(BrowserLinkTest, TimeOutsDoNothingOnceTheLinkIsGone) {
  auto shortLived = std::unique_ptr<BrowserLink>(new BrowserLink(test::makeLink(system, paths)));
  shortLived->connections.push_back(std::make_shared<test::RecordingConnection>(Browser::firefox));
  std::vector<FocusResult> results;
  shortLived->focus(1, Browser::firefox, into(results));
  shortLived.reset();
  system.queue.advance(1h);
  EXPECT_THAT(results, IsEmpty());
}

TEST_F(BrowserLinkTest, SettingsAreBroadcastToEveryReadyConnectionAlsoOfUnknownBrowsers) {
  const auto chrome = connect(Browser::chrome);
  const auto stranger = connectStranger();
  stranger->extensionVersion = "1";
  const auto notReady = connectStranger();
  const auto pretender = connect(Browser::safari);
  link.broadcastSettings();
  EXPECT_THAT(chrome->sent, ElementsAre(settings));
  EXPECT_THAT(stranger->sent, ElementsAre(settings));
  EXPECT_THAT(notReady->sent, IsEmpty());
  EXPECT_THAT(pretender->sent, IsEmpty());
  EXPECT_THAT(system.safari.sent, IsEmpty());
}

TEST_F(BrowserLinkTest, WithNobodyThereNothingIsBroadcast) {
  link.broadcastSettings();
  EXPECT_THAT(system.safari.sent, IsEmpty());
}

TEST_F(BrowserLinkTest, AHelloOfSafariIsAnsweredThroughSafari) {
  link.handle(link.safariConnection(), {{"type", "hello"}, {"version", "1"}});
  EXPECT_TRUE(link.safariEnabled);
  EXPECT_TRUE(link.isConnected(Browser::safari));
  EXPECT_THAT(system.safari.sent,
              ElementsAre(R"(tollvane com.quarnel.tollvane.safari {"markTabs":true,"type":"settings"})"));
}

TEST_F(BrowserLinkTest, MessagesInSafarisInboxAreReadFromTheStartOn) {
  std::vector<std::string> heard;
  link.onTab = [&](BrowserConnection& from, const Message& report) {
    EXPECT_EQ(&from, &link.safariConnection());
    EXPECT_EQ(from.browser(), Browser(Browser::safari));
    heard.push_back(report.at("title"));
  };
  const auto firefox = connect(Browser::firefox);
  const std::filesystem::path inbox = paths.supportDir() / "safari-inbox";
  system.files.createDirectories(inbox);
  system.files.contents[inbox / "1.json"] = R"({"type":"hello","version":"1"})";
  system.files.contents[inbox / "2.json"] = R"({"type":"audible","tabId":4,"title":"Before","host":"a.example"})";
  link.start();
  EXPECT_TRUE(link.safariEnabled);
  EXPECT_THAT(heard, ElementsAre("Before"));
  EXPECT_THAT(system.safari.sent,
              ElementsAre(R"(tollvane com.quarnel.tollvane.safari {"markTabs":true,"type":"settings"})"));
  EXPECT_THAT(firefox->sent, IsEmpty());

  system.files.contents[inbox / "3.json"] = R"({"type":"audible","tabId":4,"title":"After","host":"a.example"})";
  system.queue.directoryChanged(inbox);
  EXPECT_THAT(heard, ElementsAre("Before", "After"));
}

TEST_F(BrowserLinkTest, SafariGetsQuestionsAndSettingsOnlyWhileItIsEnabled) {
  std::vector<FocusResult> results;
  link.askWhichTabIsAudible(Browser::safari);
  link.focus(5, Browser::safari, into(results));
  EXPECT_THAT(results, ElementsAre(FocusResult::unreachable));
  EXPECT_THAT(system.safari.sent, IsEmpty());

  link.safariEnabled = true;
  link.askWhichTabIsAudible(Browser::safari);
  link.focus(5, Browser::safari, into(results));
  link.broadcastSettings();
  EXPECT_THAT(system.safari.sent,
              ElementsAre(R"(tollvane com.quarnel.tollvane.safari {"type":"whichAudible"})",
                          R"(tollvane com.quarnel.tollvane.safari {"req":2,"tabId":5,"type":"focus"})",
                          R"(tollvane com.quarnel.tollvane.safari {"markTabs":true,"type":"settings"})"));
  link.handle(link.safariConnection(), {{"type", "focusResult"}, {"req", 2}, {"ok", true}});
  EXPECT_THAT(results, ElementsAre(FocusResult::unreachable, FocusResult::focused));
}

TEST_F(BrowserLinkTest, SafariCountsAsDisabledUntilItSaysThatItIsEnabled) {
  int completions = 0;
  const auto completion = [&] { ++completions; };
  system.safari.state = true;
  link.refreshSafariState(completion);
  EXPECT_FALSE(link.safariEnabled);  // not before the main queue runs
  system.queue.runDue();
  EXPECT_TRUE(link.safariEnabled);
  system.safari.state.reset();
  link.refreshSafariState(completion);
  link.refreshSafariState(nullptr);
  system.queue.runDue();
  EXPECT_FALSE(link.safariEnabled);
  EXPECT_EQ(completions, 2);
}

TEST_F(BrowserLinkTest, TheExtensionsPageOfSafarisSettingsCanBeOpened) {
  link.openSafariExtensionSettings();
  EXPECT_THAT(system.safari.preferencesShown, ElementsAre("com.quarnel.tollvane.safari"));
}

}  // namespace
}  // namespace tollvane
