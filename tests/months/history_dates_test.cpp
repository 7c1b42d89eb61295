// The dates in the history, through the dates of a real system: where clocks are put forward and back, and far ahead.

#include <gtest/gtest.h>
#include <time.h>

#include <cstdlib>

#include "app/history.h"
#include "platform/linux/system/clock_and_dates.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using namespace std::chrono;

class HistoryDatesTest : public testing::Test {
 protected:
  HistoryDatesTest() { live("Europe/Berlin"); }
  ~HistoryDatesTest() override {
    ::unsetenv("TZ");
    ::tzset();
  }
  static void live(const char* zone) { ::setenv("TZ", zone, 1); }

  void append(sys_seconds when) { history.append({when, "Mail", kind::alertSound}); }
  std::string dates() {
    std::string result;
    std::istringstream lines(system.files.contents["/home/user/Application Support/Tollvane/history.txt"]);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_TRUE(line.ends_with("\tMail\talert sound\t")) << line;
      result += line.substr(0, line.find('\t')) + "\n";
    }
    return result;
  }

  test::VirtualPlatform system;
  IcuDateFormatter formatter;
  Paths paths{system.locations, system.files};
  History history{paths, system.files, formatter};
};

TEST_F(HistoryDatesTest, TheHourThatIsLeftOutInSpringIsLeftOut) {
  const auto change = sys_days(2026y / March / 29) + 1h;
  append(change - 1s);
  append(change);
  EXPECT_EQ(dates(), "2026-03-29 01:59:59\n2026-03-29 03:00:00\n");
}

TEST_F(HistoryDatesTest, TheHourThatComesTwiceInAutumnIsWrittenTwice) {
  const auto change = sys_days(2026y / October / 25) + 1h;
  append(change - 1s);
  append(change);
  append(change + 1h);
  EXPECT_EQ(dates(), "2026-10-25 02:59:59\n2026-10-25 02:00:00\n2026-10-25 03:00:00\n");
}

TEST_F(HistoryDatesTest, TheEndOf32BitSecondsMeansNothing) {
  live("UTC");
  const sys_seconds last(seconds(0x7fffffff));
  for (const auto after : {0s, 1s}) append(last + after);
  append(sys_days(2100y / March / 1));
  EXPECT_EQ(dates(), "2038-01-19 03:14:07\n2038-01-19 03:14:08\n2100-03-01 00:00:00\n");
}

TEST_F(HistoryDatesTest, AUserWhoTravelsGetsTheNewTimeAtOnce) {
  const auto noon = sys_days(2026y / January / 1) + 12h;
  append(noon);
  live("America/New_York");
  append(noon);
  EXPECT_EQ(dates(), "2026-01-01 13:00:00\n2026-01-01 07:00:00\n");
}

// Unix time has no leap seconds: the second that was inserted at the end of 2016 is the one before it once more.
TEST_F(HistoryDatesTest, ALeapSecondIsTheSecondBeforeItOnceMore) {
  live("UTC");
  const auto newYear = sys_days(2017y / January / 1);
  for (const auto when : {newYear - 1s, newYear - 1s, sys_seconds(newYear)}) append(when);
  EXPECT_EQ(dates(), "2016-12-31 23:59:59\n2016-12-31 23:59:59\n2017-01-01 00:00:00\n");
}

}  // namespace
}  // namespace tollvane
