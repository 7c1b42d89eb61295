#include "app/history.h"

#include <gtest/gtest.h>

#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

class HistoryTest : public testing::Test {
 protected:
  void append(std::string_view app) { history.append({system.clock.now(), app, kind::alertSound}); }
  std::string content() { return system.files.contents[path]; }

  test::VirtualPlatform system;
  const std::filesystem::path path = "/home/user/Application Support/Tollvane/history.txt";
  Paths paths{system.locations, system.files};
  History history{paths, system.files, system.dates};
};

TEST_F(HistoryTest, TheFirstLineMakesTheFileAndLaterOnesAreAppended) {
  append("Mail");
  EXPECT_EQ(content(), "2025-01-31 14:05:09\tMail\talert sound\t\n");
  EXPECT_EQ(system.files.atomicWrites, 1);
  system.clock.advance(std::chrono::seconds(1));
  append("Chat");
  EXPECT_EQ(content(), "2025-01-31 14:05:09\tMail\talert sound\t\n2025-01-31 14:05:10\tChat\talert sound\t\n");
  EXPECT_EQ(system.files.atomicWrites, 1);
}

TEST_F(HistoryTest, AnEarlierHistoryIsContinued) {
  paths.supportDir();
  system.files.contents[path] = "earlier\n";
  append("Mail");
  EXPECT_EQ(content(), "earlier\n2025-01-31 14:05:09\tMail\talert sound\t\n");
}

TEST_F(HistoryTest, TextsAreWrittenAsTheyAre) {
  append("a\tb\nc");
  EXPECT_EQ(content(), "2025-01-31 14:05:09\ta\tb\nc\talert sound\t\n");
}

TEST_F(HistoryTest, OnAFullOrReadOnlyDiskTheLineIsLostWithoutAnError) {
  append("Mail");
  const std::string before = content();
  system.files.full = true;
  append("Chat");
  EXPECT_EQ(content(), before);
  system.files.full = false;
  system.files.readOnly = true;
  append("Chat");
  EXPECT_EQ(content(), before);
  system.files.readOnly = false;
  append("Later");
  EXPECT_EQ(content(), before + "2025-01-31 14:05:09\tLater\talert sound\t\n");
}

}  // namespace
}  // namespace tollvane
