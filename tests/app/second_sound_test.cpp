// Sounds that no report comes for, because their tab was heard already: their browser is asked.
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
using testing::SizeIs;
using namespace std::chrono_literals;

constexpr Pid audioService = 10;

class SecondSoundTest : public testing::Test {
 protected:
  SecondSoundTest() {
    delegate->applicationDidFinishLaunching();
    system.queue.runDue();  // the settings are sent to all at the start
    profile = connect();
  }

  std::shared_ptr<test::RecordingConnection> connect(Browser browser = Browser::firefox) {
    delegate->link().connections.push_back(std::make_shared<test::RecordingConnection>(browser));
    return std::static_pointer_cast<test::RecordingConnection>(delegate->link().connections.back());
  }

  void hear(std::string_view app = "Firefox") { system.children.last().print(test::outputStarted(app, audioService)); }
  void say(const Message& message, const std::shared_ptr<test::RecordingConnection>& from) {
    delegate->link().handle(*from, message);
  }
  static Message tab(std::string_view title, std::int64_t tabId) {
    return {{"type", "audible"}, {"tabId", tabId}, {"title", title}, {"host", "example.org"}};
  }
  static Message answer(std::string_view title, std::int64_t tabId) {
    Message message = tab(title, tabId);
    message["asked"] = true;
    return message;
  }
  static Message count(int tabs) { return {{"type", "audibleCount"}, {"count", tabs}}; }
  void report(std::string_view title, std::int64_t tabId) { say(tab(title, tabId), profile); }
  void answerOnly(std::string_view title, std::int64_t tabId) { say(answer(title, tabId), profile); }

  // The tabs of the sounds, the newest first; "-" if there is none.
  std::vector<std::string> tabs() {
    std::vector<std::string> titles;
    for (const auto& event : delegate->recorder().events) titles.push_back(event->tabTitle.value_or("-"));
    return titles;
  }
  std::string history() const {
    return system.files.contents.at("/home/user/Application Support/Tollvane/history.txt");
  }

  test::VirtualPlatform system;
  std::unique_ptr<AppDelegate> delegate = std::make_unique<AppDelegate>(system.platform());
  std::shared_ptr<test::RecordingConnection> profile;
};

const Message question = {{"type", "whichAudible"}};

TEST_F(SecondSoundTest, ASecondSoundOfTheSameTabHasItsTabAndTheNextTabsSoundItsOwn) {
  hear();
  report("Alpha", 1);
  system.queue.advance(2s);
  hear();  // the tab has been audible all the while, so nothing is reported
  EXPECT_THAT(profile->sent, IsEmpty());
  system.queue.advance(300ms);
  EXPECT_THAT(profile->sent, ElementsAre(question));
  answerOnly("Alpha", 1);
  EXPECT_THAT(tabs(), ElementsAre("Alpha", "Alpha"));
  system.queue.advance(700ms);
  report("Beta", 2);  // whose sound is a repetition to the watcher
  system.queue.advance(1h);
  EXPECT_THAT(tabs(), ElementsAre("Beta", "Alpha", "Alpha"));
}

TEST_F(SecondSoundTest, AnAnswerIsInTheHistoryToo) {
  hear();
  system.queue.advance(300ms);
  answerOnly("Alpha", 1);
  system.queue.advance(4s);
  EXPECT_EQ(history(), "2025-01-31 14:05:09\tFirefox\tstarted playing audio\tAlpha  (example.org)\n");
}

TEST_F(SecondSoundTest, ASoundThatIsReportedInTimeIsNotAskedAbout) {
  hear();
  system.queue.advance(299ms);
  report("Alpha", 1);
  system.queue.advance(1h);
  EXPECT_THAT(profile->sent, IsEmpty());
}

TEST_F(SecondSoundTest, ASoundThatIsNoBrowsersIsNotAskedAbout) {
  hear("Mail");
  system.queue.advance(1h);
  EXPECT_THAT(profile->sent, IsEmpty());
}

TEST_F(SecondSoundTest, OfSeveralAudibleTabsNoneIsTakenAndNoLaterReportIsEither) {
  hear();
  system.queue.advance(300ms);
  say(count(2), profile);
  system.queue.advance(500ms);
  report("Beta", 2);
  EXPECT_THAT(tabs(), ElementsAre("-"));
  system.queue.advance(2500ms);
  EXPECT_THAT(tabs(), ElementsAre("Beta", "-"));
}

TEST_F(SecondSoundTest, WhileNoTabIsAudibleTheNextReportMayBeTheSounds) {
  hear();
  system.queue.advance(300ms);
  say(count(0), profile);
  system.queue.advance(1s);
  report("Slow page", 1);
  EXPECT_THAT(tabs(), ElementsAre("Slow page"));
}

TEST_F(SecondSoundTest, AReportThatComesAfterTheAnswerAboutTheSameTabIsNoSecondSound) {
  hear();
  system.queue.advance(300ms);
  answerOnly("Alpha", 1);
  report("Alpha", 1);
  system.queue.advance(1h);
  EXPECT_THAT(tabs(), ElementsAre("Alpha"));
}

TEST_F(SecondSoundTest, ASecondReportAfterTheAnswerIsASoundOfItsOwn) {
  hear();
  system.queue.advance(300ms);
  answerOnly("Alpha", 1);
  report("Alpha", 1);
  report("Alpha", 1);
  system.queue.advance(1h);
  EXPECT_THAT(tabs(), ElementsAre("Alpha", "Alpha"));
}

TEST_F(SecondSoundTest, AnAnswerForASoundThatWasReportedMeanwhileIsNoSound) {
  hear();
  system.queue.advance(300ms);
  report("Alpha", 1);
  answerOnly("Alpha", 1);
  system.queue.advance(1h);
  EXPECT_THAT(tabs(), ElementsAre("Alpha"));
}

TEST_F(SecondSoundTest, AnAnswerThatNobodyAskedForIsNoSound) {
  answerOnly("Alpha", 1);
  say(count(1), profile);
  hear();
  answerOnly("Alpha", 1);
  system.queue.advance(299ms);
  EXPECT_THAT(tabs(), ElementsAre("-"));
}

TEST_F(SecondSoundTest, AnAnswerThatComesTooLateIsNone) {
  hear();
  system.queue.advance(300ms + 2500ms);
  answerOnly("Alpha", 1);
  EXPECT_THAT(tabs(), ElementsAre("-"));
}

TEST_F(SecondSoundTest, ATabCountsOnlyIfNoOtherProfileHearsOne) {
  const auto other = connect();
  connect(Browser::chrome);
  hear();
  system.queue.advance(300ms);
  EXPECT_THAT(other->sent, ElementsAre(question));
  answerOnly("Alpha", 1);
  EXPECT_THAT(tabs(), ElementsAre("-"));
  say(count(0), other);
  EXPECT_THAT(tabs(), ElementsAre("Alpha"));

  system.queue.advance(2s);
  hear();
  system.queue.advance(300ms);
  say(answer("Gamma", 3), other);
  answerOnly("Alpha", 1);
  EXPECT_THAT(tabs(), ElementsAre("-", "Alpha"));
}

TEST_F(SecondSoundTest, AProfileThatDoesNotAnswerMayHaveMadeTheSound) {
  const auto silent = connect();
  hear();
  system.queue.advance(300ms);
  answerOnly("Alpha", 1);
  system.queue.advance(1h);
  EXPECT_THAT(tabs(), ElementsAre("-"));
}

TEST_F(SecondSoundTest, EachOfTwoQuestionsHasItsOwnAnswer) {
  hear();
  system.children.last().print(test::soundRequested("Firefox", audioService));  // another kind, so no repetition
  system.queue.advance(300ms);
  EXPECT_THAT(profile->sent, ElementsAre(question, question));
  say(count(2), profile);
  answerOnly("Alpha", 1);
  EXPECT_THAT(tabs(), ElementsAre("Alpha", "-"));
}

// Alpha :00 and :02, Beta in between: Beta's sound is a repetition to the watcher, and Alpha's second one is not
// Beta's.
TEST_F(SecondSoundTest, AReportWhoseOwnSoundWasDroppedWaitsForNoOtherSound) {
  hear();
  report("Alpha", 1);
  system.queue.advance(500ms);
  report("Beta", 2);
  system.queue.advance(1500ms);
  hear();
  EXPECT_THAT(tabs(), ElementsAre("-", "Alpha"));
  system.queue.advance(300ms);
  say(count(2), profile);
  system.queue.advance(1h);
  EXPECT_THAT(tabs(), testing::UnorderedElementsAre("-", "Alpha", "Beta"));
}

TEST_F(SecondSoundTest, AReportJustBeforeASoundIsItsReportAllTheSame) {
  hear();
  report("Alpha", 1);
  system.queue.advance(1400ms);
  report("Beta", 2);
  system.queue.advance(100ms);
  hear();
  EXPECT_THAT(tabs(), ElementsAre("Beta", "Alpha"));
}

TEST_F(SecondSoundTest, AnAnswerAfterTheListWasClearedChangesNothing) {
  hear();
  system.queue.advance(300ms);
  delegate->clearList();
  answerOnly("Alpha", 1);
  system.queue.advance(1h);
  EXPECT_THAT(tabs(), IsEmpty());
}

}  // namespace
}  // namespace tollvane
