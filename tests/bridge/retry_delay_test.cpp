#include "bridge/retry_delay.h"

#include <gtest/gtest.h>

namespace tollvane::bridge {
namespace {

using namespace std::chrono_literals;

TEST(RetryDelayTest, TheDelayDoublesFromAQuarterOfASecondToHalfAMinute) {
  RetryDelay delay;
  for (const auto expected : {250ms, 500ms, 1000ms, 2000ms, 4000ms, 8000ms, 16000ms, 30000ms, 30000ms})
    EXPECT_EQ(delay.next(), expected);
}

TEST(RetryDelayTest, AfterAnAnswerTheDelayBeginsAnew) {
  RetryDelay delay;
  delay.next();
  delay.next();
  delay.reset();
  EXPECT_EQ(delay.next(), 250ms);
}

TEST(RetryDelayTest, ASocketThatHasJustAppearedIsTriedOnceMoreSoon) {
  RetryDelay delay;
  delay.next();
  delay.next();
  delay.appeared();
  EXPECT_EQ(delay.next(), 20ms);
  EXPECT_EQ(delay.next(), 250ms);
}

}  // namespace
}  // namespace tollvane::bridge
