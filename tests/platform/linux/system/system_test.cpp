// The implementations of the small roles: bundle, dates, clock, main queue.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <cstdlib>
#include <thread>

#include "platform/linux/system/clock_and_dates.h"
#include "platform/linux/system/executable_bundle.h"
#include "platform/linux/system/qt_main_queue.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_application.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

using test::Environment;

TEST(ExecutableBundleTest, AMissingOrBrokenInfoJsonHasNoValues) {
  const test::TemporaryDirectory directory;
  EXPECT_EQ(ExecutableBundle(directory.path()).infoString("CFBundleShortVersionString"), std::nullopt);
  for (const auto* broken : {"", "{", "[]", "\"CFBundleShortVersionString\""}) {
    directory.write("Info.json", broken);
    EXPECT_EQ(ExecutableBundle(directory.path()).infoString("CFBundleShortVersionString"), std::nullopt);
  }
}

TEST(ExecutableBundleTest, TheBundleIsWhereTheProgramStands) {
  EXPECT_EQ(ExecutableBundle::runningProgramsDirectory(), std::filesystem::canonical("/proc/self/exe").parent_path());
}

class IcuDateFormatterTest : public testing::Test {
 protected:
  std::string format(std::string_view pattern, const char* language, const char* zone) const {
    const Environment all{{"LC_ALL", language}};
    const Environment tz{{"TZ", zone}};
    return IcuDateFormatter().string(pattern, time);
  }

  const TimePoint time{1738332309s + 999ms};  // 2025-01-31 14:05:09.999 UTC
};

TEST_F(IcuDateFormatterTest, TimesAreInTheUsersZone) {
  EXPECT_EQ(format("h:mm:ss a", "en_US.UTF-8", "UTC"), "2:05:09 PM");
  EXPECT_EQ(format("h:mm:ss a", "en_US.UTF-8", "America/New_York"), "9:05:09 AM");
  EXPECT_EQ(format("yyyy-MM-dd HH:mm:ss", "en_US.UTF-8", "Asia/Kolkata"), "2025-01-31 19:35:09");
  EXPECT_EQ(format("yyyy-MM-dd HH:mm:ss", "en_US.UTF-8", "Pacific/Kiritimati"), "2025-02-01 04:05:09");
}

TEST_F(IcuDateFormatterTest, TimesAreInTheUsersLanguage) {
  EXPECT_EQ(format("h:mm:ss a", "ja_JP.UTF-8", "UTC"), "2:05:09 午後");
  EXPECT_EQ(format("h:mm:ss a", "C", "UTC"), "2:05:09 PM");
  EXPECT_EQ(format("h:mm:ss a", "C.UTF-8", "UTC"), "2:05:09 PM");
  EXPECT_EQ(format("h:mm:ss a", "no such language", "UTC").substr(0, 7), "2:05:09");
}

TEST_F(IcuDateFormatterTest, TheTimeLanguageGoesBeforeTheGeneralOne) {
  const Environment all{{"LC_ALL", nullptr}};
  const Environment general{{"LANG", "en_US.UTF-8"}};
  const Environment tz{{"TZ", "UTC"}};
  const Environment times{{"LC_TIME", "ja_JP.UTF-8"}};
  EXPECT_EQ(IcuDateFormatter().string("h:mm:ss a", time), "2:05:09 午後");
}

TEST(SystemClockTest, SteadyTimeCountsFromTheMachinesStartIncludingSleep) {
  const auto sinceStart = [] {
    timespec now{};
    EXPECT_EQ(::clock_gettime(CLOCK_BOOTTIME, &now), 0);
    return Instant(std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec));
  };
  const Instant before = sinceStart();
  const Instant now = SystemClock().steadyNow();
  EXPECT_LE(before, now);
  EXPECT_LE(now, sinceStart());
}

class QtMainQueueTest : public testing::Test {
 protected:
  test::TestApplication application;
};

TEST_F(QtMainQueueTest, BlocksRunInOrderAfterTheCurrentWork) {
  QtMainQueue queue;
  std::string order;
  queue.post([&] {
    queue.post([&] { order += "3"; });
    order += "1";
  });
  queue.post([&] { order += "2"; });
  queue.after(20ms, [&] {
    order += "5";
    QCoreApplication::quit();
  });
  queue.after(0s, [&] { order += "4"; });
  EXPECT_EQ(order, "");
  QCoreApplication::exec();
  EXPECT_EQ(order.back(), '5');
  EXPECT_LT(order.find('1'), order.find('2'));
  EXPECT_LT(order.find('2'), order.find('3'));
}

TEST_F(QtMainQueueTest, ADelayIsNeverCutShort) {
  QtMainQueue queue;
  const auto start = std::chrono::steady_clock::now();
  std::chrono::nanoseconds passed{};
  queue.after(50ms, [&] {
    passed = std::chrono::steady_clock::now() - start;
    QCoreApplication::quit();
  });
  QCoreApplication::exec();
  EXPECT_GE(passed, 50ms);
}

TEST_F(QtMainQueueTest, AnotherThreadMayPostAndTheBlockRunsOnTheMainOne) {
  QtMainQueue queue;
  std::thread::id ran;
  std::thread other([&] {
    queue.post([&] {
      ran = std::this_thread::get_id();
      QCoreApplication::quit();
    });
  });
  QCoreApplication::exec();
  other.join();
  EXPECT_EQ(ran, std::this_thread::get_id());
}

}  // namespace
}  // namespace tollvane
