#include "soundlog/servers/stream_tracker.h"

#include <gtest/gtest.h>

#include <map>

namespace tollvane::soundlog {
namespace {

using namespace std::chrono_literals;

constexpr StreamTracker::Serial oneStream = 71;

class StreamTrackerTest : public ::testing::Test {
 protected:
  StreamTrackerTest() { tracker_.attached(); }

  bool runs(StreamTracker::Serial stream = oneStream) { return tracker_.running(stream, now_); }
  void stops(StreamTracker::Serial stream = oneStream) { tracker_.stopped(stream, now_); }

  Instant now_ = Instant(1h);
  StreamTracker tracker_;
};

TEST_F(StreamTrackerTest, AStreamThatBeginsToRunIsAStart) {
  stops();
  EXPECT_TRUE(runs());
}

TEST_F(StreamTrackerTest, AStreamThatRunsWhenItIsAnnouncedIsAStart) { EXPECT_TRUE(runs()); }

TEST_F(StreamTrackerTest, AStreamThatRanBeforeTheLogIsNoStart) {
  tracker_.reset();
  EXPECT_FALSE(runs());
  tracker_.attached();
  EXPECT_FALSE(runs());
}

TEST_F(StreamTrackerTest, AStreamThatRanBeforeTheLogIsAStartAfterAPause) {
  tracker_.reset();
  runs();
  tracker_.attached();
  stops();
  now_ += 300ms;
  EXPECT_TRUE(runs());
}

TEST_F(StreamTrackerTest, AStreamThatWaitedBeforeTheLogIsAStartAtOnce) {
  tracker_.reset();
  stops();
  tracker_.attached();
  EXPECT_TRUE(runs());
}

TEST_F(StreamTrackerTest, ARepeatedReportOfRunningIsOneStart) {
  EXPECT_TRUE(runs());
  now_ += 1s;
  EXPECT_FALSE(runs());
}

TEST_F(StreamTrackerTest, APauseUnder300MillisecondsIsIgnored) {
  runs();
  now_ += 10s;
  stops();
  now_ += 300ms - 1ns;
  EXPECT_FALSE(runs());
}

TEST_F(StreamTrackerTest, APauseOf300MillisecondsEndsInAStart) {
  runs();
  now_ += 10s;
  stops();
  now_ += 300ms;
  EXPECT_TRUE(runs());
}

TEST_F(StreamTrackerTest, APauseBeginsAtItsFirstStop) {
  runs();
  stops();
  now_ += 200ms;
  stops();
  now_ += 200ms;
  EXPECT_TRUE(runs()) << "idle and then suspended is one pause, of 400 ms";
}

TEST_F(StreamTrackerTest, EachStreamHasItsOwnPauses) {
  runs();
  stops();
  EXPECT_TRUE(runs(72));
}

TEST_F(StreamTrackerTest, AStreamThatIsRemovedIsForgotten) {
  runs();
  tracker_.removed(oneStream);
  EXPECT_TRUE(runs());
}

TEST_F(StreamTrackerTest, AWatchTellsWhetherTheStreamRuns) {
  EXPECT_FALSE(tracker_.watch(oneStream)()) << "an unknown stream";
  runs();
  const auto watch = tracker_.watch(oneStream);
  EXPECT_TRUE(watch());
  stops();
  EXPECT_FALSE(watch());
  runs();
  EXPECT_TRUE(watch()) << "a stream may stop for a moment, and that is no other start";
  tracker_.removed(oneStream);
  EXPECT_FALSE(watch());
}

class StartMergerTest : public ::testing::Test {
 protected:
  Instant now_ = Instant(1h);
  StartMerger merger_;
};

TEST_F(StartMergerTest, ASecondStartWithin300MillisecondsIsMerged) {
  EXPECT_FALSE(merger_.merges("sox", now_));
  EXPECT_TRUE(merger_.merges("sox", now_ + 300ms - 1ns));
}

TEST_F(StartMergerTest, AStartAfter300MillisecondsIsNotMerged) {
  EXPECT_FALSE(merger_.merges("sox", now_));
  EXPECT_FALSE(merger_.merges("sox", now_ + 300ms));
}

TEST_F(StartMergerTest, MergedStartsDoNotDelayTheNextOne) {
  EXPECT_FALSE(merger_.merges("sox", now_));
  EXPECT_TRUE(merger_.merges("sox", now_ + 200ms));
  EXPECT_FALSE(merger_.merges("sox", now_ + 400ms));
}

TEST_F(StartMergerTest, DifferentMakersAreNotMerged) {
  EXPECT_FALSE(merger_.merges("a", now_));
  EXPECT_FALSE(merger_.merges("b", now_));
}

TEST_F(StartMergerTest, AStartMayAskForALongerTime) {
  EXPECT_FALSE(merger_.merges("speech", now_, 5s));
  EXPECT_FALSE(merger_.merges("sox", now_ + 4s));
  EXPECT_TRUE(merger_.merges("speech", now_ + 5s - 1ns, 5s));
  EXPECT_FALSE(merger_.merges("speech", now_ + 5s, 5s));
}

TEST_F(StartMergerTest, OlderStartsAreForgotten) {
  for (int i = 0; i < 100; ++i) merger_.merges(std::to_string(i), now_);
  merger_.merges("late", now_ + 300ms);
  EXPECT_EQ(merger_.size(), 1u);
}

Properties properties(std::map<std::string, std::string> values) {
  return [values = std::move(values)](const char* name) -> std::string_view {
    const auto found = values.find(name);
    return found == values.end() ? std::string_view() : std::string_view(found->second);
  };
}

TEST(StreamProperties, ALinkedGroupIsARelay) {
  EXPECT_TRUE(isRelay(properties({{"node.link-group", "loopback-1-18"}, {"node.virtual", "true"}})));
  EXPECT_FALSE(isRelay(properties({{"media.role", "Music"}})));
}

TEST(StreamProperties, TheRoleMakesAnAlertInAnyCase) {
  EXPECT_TRUE(isAlert(properties({{"media.role", "Notification"}})));
  EXPECT_TRUE(isAlert(properties({{"media.role", "event"}})));
  EXPECT_TRUE(isAlert(properties({{"media.role", "EVENT"}})));
  EXPECT_FALSE(isAlert(properties({{"media.role", "Music"}})));
  EXPECT_FALSE(isAlert(properties({{"media.role", "eventful"}})));
}

TEST(StreamProperties, ANamedEventMakesAnAlert) { EXPECT_TRUE(isAlert(properties({{"event.id", "bell"}}))); }

}  // namespace
}  // namespace tollvane::soundlog
