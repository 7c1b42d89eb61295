// What every implementation of Clock and DateFormatter must do. `System` makes them for a user whose language is
// English and whose time zone is UTC:
//
//   struct System {
//     const Clock& clock;
//     const DateFormatter& dates;
//   };
#pragma once

#include <gtest/gtest.h>

#include <chrono>

#include "platform/clock.h"

namespace tollvane::test {

template <typename System>
class ClockContract : public ::testing::Test {
 protected:
  System system;
};

TYPED_TEST_SUITE_P(ClockContract);

TYPED_TEST_P(ClockContract, NeitherClockGoesBackBetweenTwoReadings) {
  const TimePoint now = this->system.clock.now();
  const Instant steady = this->system.clock.steadyNow();
  EXPECT_GE(this->system.clock.now(), now);
  EXPECT_GE(this->system.clock.steadyNow(), steady);
}

TYPED_TEST_P(ClockContract, TheWallClockShowsAPlausibleYear) {
  using namespace std::chrono;
  EXPECT_GE(this->system.clock.now(), sys_days(year(2025) / January / 1));
  EXPECT_LT(this->system.clock.now(), sys_days(year(2200) / January / 1));
}

TYPED_TEST_P(ClockContract, TimesAreWrittenInThePatternsOfTheMenuAndOfTheHistory) {
  using namespace std::chrono_literals;
  const TimePoint afternoon{1738332309s + 999ms};  // 2025-01-31 14:05:09.999 UTC
  EXPECT_EQ(this->system.dates.string("h:mm:ss a", afternoon), "2:05:09 PM");
  EXPECT_EQ(this->system.dates.string("yyyy-MM-dd HH:mm:ss", afternoon), "2025-01-31 14:05:09");
  EXPECT_EQ(this->system.dates.string("h:mm:ss a", afternoon - 14h), "12:05:09 AM");
  EXPECT_EQ(this->system.dates.string("yyyy-MM-dd HH:mm:ss", afternoon + 10h), "2025-02-01 00:05:09");
}

REGISTER_TYPED_TEST_SUITE_P(ClockContract, NeitherClockGoesBackBetweenTwoReadings, TheWallClockShowsAPlausibleYear,
                            TimesAreWrittenInThePatternsOfTheMenuAndOfTheHistory);

}  // namespace tollvane::test
