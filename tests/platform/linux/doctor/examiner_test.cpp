#include "platform/linux/doctor/examiner.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/temporary_directory.h"

namespace tollvane {
namespace {

class ManifestStateTest : public testing::Test {
 protected:
  ManifestState state() const { return manifestState(directory / "manifest.json", {"a/", "b/"}); }
  void write(const std::string& path, const std::string& origins) const {
    directory.write("manifest.json", R"({"path": ")" + path + R"(", "allowed_origins": )" + origins + "}");
  }
  test::TemporaryDirectory directory;
};

TEST_F(ManifestStateTest, AManifestThatNamesAProgramAndAdmitsTheExtensionsIsRight) {
  write("/bin/sh", R"(["x/", "b/", "a/"])");
  EXPECT_EQ(state(), ManifestState::right);
  directory.write("manifest.json", R"({"path": "/bin/sh", "allowed_extensions": ["a/", "b/"]})");
  EXPECT_EQ(state(), ManifestState::right);
}

TEST_F(ManifestStateTest, ALinkCountsAsWhatItLeadsTo) {
  write("/bin/sh", R"(["a/", "b/"])");
  std::filesystem::rename(directory / "manifest.json", directory / "elsewhere.json");
  std::filesystem::create_symlink(directory / "elsewhere.json", directory / "manifest.json");
  EXPECT_EQ(state(), ManifestState::right);
  std::filesystem::remove(directory / "elsewhere.json");
  EXPECT_EQ(state(), ManifestState::unreadable);
}

TEST_F(ManifestStateTest, AMissingBridgeOrOneThatIsNoProgramIsTold) {
  write((directory / "gone").string(), R"(["a/", "b/"])");
  EXPECT_EQ(state(), ManifestState::noBridge);
  directory.write("text", "no program");
  write((directory / "text").string(), R"(["a/", "b/"])");
  EXPECT_EQ(state(), ManifestState::noBridge);
}

TEST_F(ManifestStateTest, AManifestThatDoesNotAdmitAllExtensionsIsNotOurs) {
  EXPECT_EQ(state(), ManifestState::none);
  for (const char* text : {"", "{}", "[]", "{", R"({"path": "/bin/sh", "allowed_origins": ["a/"]})",
                           R"({"path": "/bin/sh", "allowed_origins": "a/ b/"})"}) {
    directory.write("manifest.json", text);
    EXPECT_EQ(state(), ManifestState::unreadable) << text;
  }
}

TEST(PackagingTest, TheFolderOfTheEntryTellsHowTheBrowserWasInstalled) {
  EXPECT_EQ(packagingOf("/usr/share/applications/firefox-esr.desktop"), BrowserPackaging::ordinary);
  EXPECT_EQ(packagingOf("/var/lib/snapd/desktop/applications/firefox_firefox.desktop"), BrowserPackaging::snap);
  EXPECT_EQ(packagingOf("/var/lib/flatpak/exports/share/applications/org.mozilla.firefox.desktop"),
            BrowserPackaging::flatpak);
  EXPECT_EQ(packagingOf("/home/me/.local/share/flatpak/exports/share/applications/org.mozilla.firefox.desktop"),
            BrowserPackaging::flatpak);
}

class LastTimeTest : public testing::Test {
 protected:
  std::string timeIn(const std::string& history) const {
    directory.write("history.txt", history);
    return lastTimeIn(directory / "history.txt");
  }
  test::TemporaryDirectory directory;
};

TEST_F(LastTimeTest, ItIsThatOfTheLastLine) {
  EXPECT_EQ(timeIn("2026-11-22 08:55:44\tpaplay\talert sound\t\n2026-11-22 09:00:01\tMail\talert sound\t\n"),
            "2026-11-22 09:00:01");
}

TEST_F(LastTimeTest, OnlyTheEndOfALongHistoryIsRead) {
  std::string history;
  while (history.size() < (3 << 20)) history += "2026-11-22 08:00:00\tpaplay\talert sound\t\n";
  EXPECT_EQ(timeIn(history + "2026-11-22 09:00:02\tMail\talert sound\t\n"), "2026-11-22 09:00:02");
}

TEST_F(LastTimeTest, WhatIsNoTimeIsNotTold) {
  EXPECT_EQ(lastTimeIn(directory / "history.txt"), "");
  for (const char* text : {"", "\n", "short\n", "A title of a secret page\tx\n"}) EXPECT_EQ(timeIn(text), "") << text;
}

TEST(RunningTollvaneTest, WhatItSaysIsRead) {
  const auto running = runningTollvane(R"({"version": "0.2.0", "logTool": true, "soundServer": false, "extensions": [
      {"browser": "b", "version": "1", "lastReport": "t"}, {"version": "2"}, 7]})");
  EXPECT_EQ(running.version, "0.2.0");
  EXPECT_TRUE(running.hearsLogTool);
  EXPECT_FALSE(running.hearsSoundServer);
  ASSERT_EQ(running.extensions.size(), 2u);
  EXPECT_EQ(running.extensions[0].bundleID, "b");
  EXPECT_EQ(running.extensions[0].lastReport, "t");
  EXPECT_EQ(running.extensions[1].bundleID, "");
}

TEST(RunningTollvaneTest, AnAnswerThatIsNoneHasNoVersion) {
  for (const char* text : {"", "[]", "{", R"({"version": 1, "extensions": {}})"})
    EXPECT_EQ(runningTollvane(text).version, "") << text;
}

}  // namespace
}  // namespace tollvane
