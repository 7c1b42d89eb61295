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

TEST_F(HistoryTest, AFolderThatCouldNotBeMadeAtFirstIsMadeForTheNextLine) {
  system.files.readOnly = true;
  append("Mail");
  system.files.readOnly = false;
  append("Chat");
  EXPECT_EQ(content(), "2025-01-31 14:05:09\tChat\talert sound\t\n");
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

TEST_F(HistoryTest, AFileThatCannotBeWrittenIsSetAsideAndNothingIsLost) {
  append("Mail");
  const std::string earlier = content();
  const auto numbered = [&](int i) { return path.parent_path() / ("history-" + std::to_string(i) + ".txt"); };
  for (int i = 1; i <= 2; ++i) {
    system.files.contents[path] = earlier;
    system.files.locked = {path};
    append("Chat");
    EXPECT_EQ(system.files.contents[numbered(i)], earlier);
    EXPECT_EQ(content(), "2025-01-31 14:05:09\tChat\talert sound\t\n");
  }
  system.files.contents[path] = earlier;
  system.files.locked = {path};
  system.files.cannotRename = true;
  append("Chat");
  EXPECT_EQ(content(), earlier) << "the line is lost, not the file";
}

TEST_F(HistoryTest, ALineThatDoesNotFitLeavesTheFileInItsPlace) {
  append("Mail");
  const std::string earlier = content();
  system.files.full = true;
  append("Chat");
  system.files.full = false;
  EXPECT_EQ(content(), earlier);
  EXPECT_EQ(system.files.atomicWrites, 1);
  EXPECT_FALSE(system.files.contents.contains(path.parent_path() / "history-1.txt"));
}

}  // namespace
}  // namespace tollvane
