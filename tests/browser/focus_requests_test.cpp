// Several profiles of one browser, each with an extension of its own: which of them is asked for a tab, and what their
// answers mean together.
#include "browser/focus_requests.h"

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
using testing::SizeIs;
using namespace std::chrono_literals;

using Profile = std::shared_ptr<test::RecordingConnection>;

Profile profile() { return std::make_shared<test::RecordingConnection>(Browser::firefox); }

class FocusRequestsTest : public testing::Test {
 protected:
  void ask(std::int64_t tabId = 7) {
    requests->ask(tabId, {work, home}, [this](FocusResult result, auto) { results.push_back(result); });
  }
  void answer(const Profile& from, std::int64_t request, bool ok) {
    requests->answered(*from, {{"type", "focusResult"}, {"req", request}, {"ok", ok}});
  }

  test::VirtualPlatform system;
  std::unique_ptr<FocusRequests> requests = std::make_unique<FocusRequests>(system.queue);
  Profile work = profile();
  Profile home = profile();
  std::vector<FocusResult> results;
};

const Message question = {{"type", "focus"}, {"req", 1}, {"tabId", 7}};

TEST_F(FocusRequestsTest, ATabThatTheFirstProfileDoesNotHaveIsAskedForInTheSecond) {
  ask();
  EXPECT_THAT(work->sent, ElementsAre(question));
  EXPECT_THAT(home->sent, IsEmpty());
  answer(work, 1, false);
  EXPECT_THAT(results, IsEmpty());
  EXPECT_THAT(home->sent, ElementsAre(question));
  answer(home, 1, true);
  EXPECT_THAT(results, ElementsAre(FocusResult::focused));
}

TEST_F(FocusRequestsTest, ATabThatTheFirstProfileBringsForwardIsAskedForNowhereElse) {
  ask();
  answer(work, 1, true);
  EXPECT_THAT(results, ElementsAre(FocusResult::focused));
  EXPECT_THAT(home->sent, IsEmpty());
}

TEST_F(FocusRequestsTest, ATabThatNoProfileHasIsClosed) {
  ask();
  answer(work, 1, false);
  answer(home, 1, false);
  EXPECT_THAT(results, ElementsAre(FocusResult::tabClosed));
}

TEST_F(FocusRequestsTest, AnAnswerCountsOnlyFromTheProfileThatWasAsked) {
  ask();
  answer(home, 1, true);
  EXPECT_THAT(results, IsEmpty());
  answer(work, 1, false);
  answer(work, 1, true);
  EXPECT_THAT(results, IsEmpty());
  answer(home, 1, false);
  EXPECT_THAT(results, ElementsAre(FocusResult::tabClosed));
}

TEST_F(FocusRequestsTest, AllProfilesTogetherHaveTwoAndAHalfSeconds) {
  ask();
  system.queue.advance(2s);
  answer(work, 1, false);
  system.queue.advance(499ms);
  EXPECT_THAT(results, IsEmpty());
  system.queue.advance(1ms);
  EXPECT_THAT(results, ElementsAre(FocusResult::unreachable));
  answer(home, 1, true);
  EXPECT_THAT(results, SizeIs(1));
}

TEST_F(FocusRequestsTest, ATabWhoseOnlyProfileWentAwayIsUnreachableAtOnce) {
  requests->ask(7, {work}, [this](FocusResult result, auto) { results.push_back(result); });
  requests->closed(*work);
  EXPECT_THAT(results, ElementsAre(FocusResult::unreachable));
  system.queue.advance(1h);
  EXPECT_THAT(results, SizeIs(1));
}

TEST_F(FocusRequestsTest, AProfileThatWentAwayMayHaveHadTheTabThatTheOthersDoNotHave) {
  ask();
  requests->closed(*work);
  EXPECT_THAT(home->sent, ElementsAre(question));
  answer(home, 1, false);
  EXPECT_THAT(results, ElementsAre(FocusResult::unreachable));
}

TEST_F(FocusRequestsTest, AProfileThatWentAwayBeforeItWasAskedIsNotAsked) {
  ask();
  requests->closed(*home);
  EXPECT_THAT(results, IsEmpty());
  answer(work, 1, false);
  EXPECT_THAT(results, ElementsAre(FocusResult::unreachable));
  EXPECT_THAT(home->sent, IsEmpty());
}

TEST_F(FocusRequestsTest, EveryRequestOfAProfileThatWentAwayIsAnswered) {
  ask(7);
  ask(8);
  answer(work, 2, false);
  requests->closed(*work);
  requests->closed(*home);
  EXPECT_THAT(results, ElementsAre(FocusResult::unreachable, FocusResult::unreachable));
}

TEST_F(FocusRequestsTest, ACompletionMayAskAgainWhenAProfileGoesAway) {
  requests->ask(7, {work}, [this](FocusResult, auto) { ask(8); });
  requests->ask(9, {work}, [this](FocusResult result, auto) { results.push_back(result); });
  requests->closed(*work);
  EXPECT_THAT(results, ElementsAre(FocusResult::unreachable));
}

TEST_F(FocusRequestsTest, TheProfileThatReportedATabIsAskedFirst) {
  Paths paths{system.locations, system.files};
  BrowserLink link = test::makeLink(system, paths);
  link.connections = {work, home};
  const auto collect = [this](FocusResult result, auto) { results.push_back(result); };
  link.handle(*home, {{"type", "audible"}, {"tabId", 7}});
  link.focus(7, Browser::firefox, collect);
  EXPECT_THAT(work->sent, IsEmpty());
  EXPECT_THAT(home->sent, ElementsAre(question));
  link.handle(*home, {{"type", "focusResult"}, {"req", 1}, {"ok", false}});
  link.handle(*work, {{"type", "focusResult"}, {"req", 1}, {"ok", true}});
  EXPECT_THAT(results, ElementsAre(FocusResult::focused));
}

TEST_F(FocusRequestsTest, OfAnEndlessSeriesOfReportsTheLastAreRemembered) {
  for (std::int64_t tab = 1; tab <= 100'000; ++tab) work->remember(tab);
  EXPECT_TRUE(work->hasReported(100'000));
  EXPECT_TRUE(work->hasReported(100'000 - 50));
  EXPECT_FALSE(work->hasReported(1));
}

}  // namespace
}  // namespace tollvane
