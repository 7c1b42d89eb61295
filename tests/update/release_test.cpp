#include "update/release.h"

#include <gtest/gtest.h>

namespace tollvane {
namespace {

using namespace std::chrono_literals;

const std::string page = "https://example.org/tollvane/download";

TEST(VersionTest, NumbersDecideAndLettersDoNot) {
  EXPECT_TRUE(compareVersions("1.10", "1.9") > 0);
  EXPECT_TRUE(compareVersions("1.2.1", "1.2") > 0);
  EXPECT_TRUE(compareVersions("1.2", "1.2.1") < 0);
  EXPECT_TRUE(compareVersions("2.0", "2") == 0);
  EXPECT_TRUE(compareVersions("1.a", "1.0") == 0);
  EXPECT_TRUE(compareVersions("1..2", "1.2") == 0);
  EXPECT_TRUE(compareVersions(".1.", "1") == 0);
  EXPECT_TRUE(compareVersions("", "0") == 0);
  EXPECT_TRUE(compareVersions("01.02", "1.2") == 0);
  EXPECT_TRUE(compareVersions("1.-2", "1.0") == 0);
  EXPECT_TRUE(compareVersions("1.2b", "1") == 0);
}

TEST(VersionTest, VersionNumbersMayHaveAnyLength) {
  EXPECT_TRUE(compareVersions("1." + std::string(40, '9'), "1.9223372036854775807") > 0);
  EXPECT_TRUE(compareVersions("99999999999999999998", "99999999999999999999") < 0);
}

TEST(ReleaseTest, AVersionAloneIsARelease) {
  const auto release = releaseFromFeed(R"({"version":"9.9"})", page);
  EXPECT_EQ(release, (Release{"9.9", page, std::nullopt, ""}));
}

TEST(ReleaseTest, EverythingIsRead) {
  const auto release = releaseFromFeed(
      R"({"version":"9.9","url":"https://example.org/9.9","released":"2025-01-31","notes":"n","more":1})", page);
  ASSERT_TRUE(release);
  EXPECT_EQ(release->url, "https://example.org/9.9");
  EXPECT_EQ(release->released, TimePoint(1738281600s));
  EXPECT_EQ(release->notes, "n");
}

TEST(ReleaseTest, ADateInAnotherFormatIsIgnored) {
  for (const char* date : {"", "31.01.2025", "2025-1-31", "2025-02-30", "2025-01-31 ", "2025/01/31", "+025-01-31"}) {
    const auto release = releaseFromFeed(R"({"version":"9.9","released":")" + std::string(date) + "\"}", page);
    ASSERT_TRUE(release) << date;
    EXPECT_FALSE(release->released) << date;
  }
  EXPECT_FALSE(releaseFromFeed(R"({"version":"9.9","released":20250131})", page)->released);
}

TEST(ReleaseTest, ADateThatNoClockReachesIsIgnored) {
  const auto released = [](const std::string& date) {
    return releaseFromFeed(R"({"version":"9.9","released":")" + date + "\"}", page)->released;
  };
  for (const char* date : {"0001-01-01", "0921-02-28", "1677-09-21", "2262-04-12", "9999-12-31"})
    EXPECT_FALSE(released(date)) << date;
  EXPECT_EQ(released("1900-01-01"), TimePoint(-2208988800s));
  EXPECT_EQ(released("2262-04-11"), TimePoint(9223286400s));
}

TEST(ReleaseTest, OnlyAWebPageIsTakenAsThePage) {
  for (const char* url : {"file:///etc/passwd", "javascript:alert(1)", "", "https://", "example.org", "ftp://a/b"})
    EXPECT_EQ(releaseFromFeed(R"({"version":"1","url":")" + std::string(url) + "\"}", page)->url, page) << url;
  EXPECT_EQ(releaseFromFeed(R"({"version":"1","url":7})", page)->url, page);
  EXPECT_EQ(releaseFromFeed(R"({"version":"1","url":"HTTP://a/b"})", page)->url, "HTTP://a/b");
}

TEST(ReleaseTest, WithoutAVersionThereIsNoRelease) {
  for (const char* body : {"", "[]", "{}", "7", R"({"version":null})", R"({"version":1.0})", R"([{"version":"1"}])"})
    EXPECT_FALSE(releaseFromFeed(body, page)) << body;
}

}  // namespace
}  // namespace tollvane
