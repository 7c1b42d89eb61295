#include "platform/linux/session/launcher_entry.h"

#include <gtest/gtest.h>

#include "platform/linux/apps/desktop_entry.h"
#include "tests/support/temporary_directory.h"

namespace tollvane {
namespace {

class LauncherEntryTest : public testing::Test {
 protected:
  void write(const std::filesystem::path& bundle) {
    writeLauncherEntry(files, home / "data", {home / "data", home / "system"}, bundle);
  }
  std::string content() const { return home.read("data/applications/tollvane.desktop"); }

  test::TemporaryDirectory home;
  PosixFiles files;
};

TEST_F(LauncherEntryTest, ABundleThatWasOnlyUnpackedGetsOne) {
  for (const char* name : {"plain", "a=b", "100% $x \\ \"", "two\nlines"}) {
    files.remove(home / "data/applications/tollvane.desktop");
    write(home / name);
    const auto entry = readDesktopEntry((home / "data/applications/tollvane.desktop").string(), "GNOME");
    ASSERT_TRUE(entry) << name;
    EXPECT_EQ(entry->name, "Tollvane");
    EXPECT_EQ(entry->command.back(), (home / name / "Tollvane").string());
    EXPECT_EQ(entry->icon, (home / name / "Extensions/chromium/icons/bell.svg").string());
    EXPECT_TRUE(entry->singleMainWindow);
    EXPECT_TRUE(isOwnLauncherEntry(files, home / "data/applications/tollvane.desktop"));
  }
}

TEST_F(LauncherEntryTest, ThatOfAPackageIsEnough) {
  home.write("system/applications/tollvane.desktop", "[Desktop Entry]\n");
  write(home / "bundle");
  EXPECT_FALSE(files.exists(home / "data/applications"));
}

TEST_F(LauncherEntryTest, TheUsersOwnStays) {
  home.write("data/applications/tollvane.desktop", "[Desktop Entry]\nName=Mine\n");
  write(home / "bundle");
  EXPECT_EQ(content(), "[Desktop Entry]\nName=Mine\n");
  EXPECT_FALSE(isOwnLauncherEntry(files, home / "data/applications/tollvane.desktop"));
}

TEST_F(LauncherEntryTest, OneOfABundleThatIsGoneIsWrittenAnew) {
  home.write("here/Tollvane", "");
  write(home / "gone");
  write(home / "here");
  EXPECT_NE(content().find((home / "here").string()), std::string::npos);
  write(home / "third");
  EXPECT_NE(content().find((home / "here").string()), std::string::npos) << "that bundle is still there";
}

}  // namespace
}  // namespace tollvane
