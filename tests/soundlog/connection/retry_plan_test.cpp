#include <gtest/gtest.h>

#include "soundlog/connection/reconnector.h"

namespace tollvane::soundlog {
namespace {

using namespace std::chrono_literals;

TEST(RetryPlan, AMissingServerIsNotTriedAgainUntilItsSocketAppears) {
  RetryPlan plan;
  EXPECT_EQ(plan.failed(), std::nullopt);
}

TEST(RetryPlan, AServerWhoseSocketAppearedGetsAMomentToListen) {
  RetryPlan plan;
  EXPECT_EQ(plan.appeared(), Duration(20ms));
  EXPECT_EQ(plan.failed(), Duration(80ms));
  EXPECT_EQ(plan.failed(), Duration(320ms));
  EXPECT_EQ(plan.failed(), Duration(1280ms));
  EXPECT_EQ(plan.failed(), Duration(5120ms));
  EXPECT_EQ(plan.failed(), std::nullopt) << "it must not be asked at intervals for ever";
}

TEST(RetryPlan, AServerThatServedWellIsTriedAgainAtOnce) {
  RetryPlan plan;
  plan.connected(Instant(1h));
  EXPECT_EQ(plan.lost(Instant(1h) + 2s), Duration(20ms));
  EXPECT_EQ(plan.failed(), Duration(80ms));
}

TEST(RetryPlan, AServerThatKeepsGoingAwayIsTriedLessAndLessOften) {
  RetryPlan plan;
  Instant now(1h);
  for (const Duration pause : {Duration(2s), Duration(4s), Duration(8s), Duration(16s), Duration(32s), Duration(60s)}) {
    plan.connected(now);
    EXPECT_EQ(plan.lost(now + 1ms), pause);
  }
  plan.connected(now);
  EXPECT_EQ(plan.lost(now + 1ms), std::nullopt);
  EXPECT_EQ(plan.failed(), std::nullopt);
  EXPECT_EQ(plan.appeared(), Duration(20ms)) << "a new socket is a new beginning";
}

TEST(RetryPlan, AfterOneGoodConnectionTheDelaysBeginAnew) {
  RetryPlan plan;
  plan.connected(Instant(1h));
  plan.lost(Instant(1h) + 1ms);
  plan.connected(Instant(2h));
  plan.lost(Instant(2h) + 1min);
  plan.connected(Instant(3h));
  EXPECT_EQ(plan.lost(Instant(3h) + 1ms), Duration(2s));
}

}  // namespace
}  // namespace tollvane::soundlog
