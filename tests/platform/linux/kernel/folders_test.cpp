#include "platform/linux/kernel/folders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/platform/linux/apps/fake_system.h"
#include "tests/support/environment.h"

namespace tollvane {
namespace {

using test::Environment;
using test::FakeSystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(FoldersTest, TheEnvironmentIsPreferredToTheHomeFolder) {
  {
    const Environment environment{{"HOME", "/home/me"}, {"XDG_DATA_HOME", "/data"}, {"XDG_CONFIG_HOME", "/conf"}};
    EXPECT_EQ(dataFolder(), "/data");
    EXPECT_EQ(configurationFolder(), "/conf");
  }
  const Environment environment{{"HOME", "/home/me"}, {"XDG_DATA_HOME", nullptr}, {"XDG_CONFIG_HOME", nullptr}};
  EXPECT_EQ(dataFolder(), "/home/me/.local/share");
  EXPECT_EQ(configurationFolder(), "/home/me/.config");
}

TEST(FoldersTest, RelativeAndEmptyPathsAreIgnored) {
  for (const auto* relative : {"", "data", "./data"}) {
    const Environment environment{{"HOME", "/home/me"}, {"XDG_DATA_HOME", relative}};
    EXPECT_EQ(dataFolder(), "/home/me/.local/share");
  }
}

TEST(FoldersTest, WithoutHomeTheUserDatabaseIsAsked) {
  const Environment environment{{"HOME", nullptr}, {"XDG_DATA_HOME", nullptr}};
  const auto path = dataFolder();
  ASSERT_TRUE(path) << "every user who runs the tests has an entry";
  EXPECT_TRUE(path->is_absolute());
  EXPECT_EQ(DesktopEnvironment::current().dataFolders.front(), *path);
}

TEST(FoldersTest, AProgramIsFoundInTheFirstFolderThatHasIt) {
  FakeSystem system;
  system.program("/a/player");
  system.program("/b/player");
  test::writeFile(system.at("/a/text"), "not executable");
  const std::string path = "relative:" + system.at("/none") + ":" + system.at("/a") + ":" + system.at("/b");
  EXPECT_EQ(findProgram("player", path), system.at("/a/player"));
  EXPECT_EQ(findProgram("text", path), std::nullopt);
  EXPECT_EQ(findProgram("missing", path), std::nullopt);
  EXPECT_EQ(findProgram("", path), std::nullopt);
  EXPECT_EQ(findProgram(system.at("/b/player"), path), system.at("/b/player"));
  EXPECT_EQ(findProgram("a/player", system.at("")), std::nullopt) << "a relative path with a folder is not looked for";
}

class NativeHostDirectories : public ::testing::Test {
 protected:
  // The folders, each with "?" in front if it is used only if the browser has run before.
  static std::vector<std::string> of(std::string_view bundleID) {
    const Environment environment{{"HOME", "/home/me"}, {"XDG_CONFIG_HOME", nullptr}};
    std::vector<std::string> folders;
    for (const auto& directory : XdgLocations().nativeHostDirectories(bundleID))
      folders.push_back(std::string(directory.usual ? "" : "?").append(directory.path.string()));
    return folders;
  }
};

TEST_F(NativeHostDirectories, EachBrowserLooksForManifestsInItsOwnFolder) {
  EXPECT_THAT(of("com.google.Chrome"), ElementsAre("/home/me/.config/google-chrome/NativeMessagingHosts",
                                                   "?/home/me/.config/google-chrome-beta/NativeMessagingHosts",
                                                   "?/home/me/.config/google-chrome-unstable/NativeMessagingHosts"));
  EXPECT_THAT(of("com.microsoft.edgemac"), ElementsAre("/home/me/.config/microsoft-edge/NativeMessagingHosts",
                                                       "?/home/me/.config/microsoft-edge-beta/NativeMessagingHosts",
                                                       "?/home/me/.config/microsoft-edge-dev/NativeMessagingHosts"));
  EXPECT_THAT(of("com.brave.Browser"),
              ElementsAre("/home/me/.config/BraveSoftware/Brave-Browser/NativeMessagingHosts"));
  EXPECT_THAT(of("org.chromium.Chromium"), ElementsAre("/home/me/.config/chromium/NativeMessagingHosts"));
  EXPECT_THAT(of("org.mozilla.firefox"), ElementsAre("/home/me/.mozilla/native-messaging-hosts"));
}

TEST_F(NativeHostDirectories, ABrowserThatIsNotSupportedHereHasNoFolders) {
  for (const char* bundleID : {"com.apple.Safari", "company.thebrowser.Browser", "com.vivaldi.Vivaldi", "", "unknown"})
    EXPECT_THAT(of(bundleID), IsEmpty()) << bundleID;
}

TEST(DesktopEnvironmentTest, DefaultsAreThoseOfTheBaseDirectories) {
  const Environment environment{{"HOME", "/home/me"}, {"XDG_DATA_HOME", nullptr}, {"XDG_DATA_DIRS", nullptr}};
  EXPECT_THAT(DesktopEnvironment::current().dataFolders,
              ElementsAre("/home/me/.local/share", "/usr/local/share", "/usr/share",
                          "/home/me/.local/share/flatpak/exports/share", "/var/lib/flatpak/exports/share",
                          "/var/lib/snapd/desktop"));
}

TEST(DesktopEnvironmentTest, FoldersOfTheEnvironmentAreListedInOrderAndOnce) {
  const Environment environment{{"HOME", "/home/me"},
                                {"XDG_DATA_HOME", "/data/"},
                                {"XDG_DATA_DIRS", "relative:/var/lib/snapd/desktop::/usr/share/:/usr/share"}};
  EXPECT_THAT(DesktopEnvironment::current().dataFolders,
              ElementsAre("/data", "/var/lib/snapd/desktop", "/usr/share", "/data/flatpak/exports/share",
                          "/home/me/.local/share/flatpak/exports/share", "/var/lib/flatpak/exports/share"));
}

TEST(DesktopEnvironmentTest, WithoutAnEnvironmentTheSystemsFoldersAndProgramsAreKnown) {
  const Environment environment{
      {"HOME", nullptr}, {"XDG_DATA_HOME", nullptr}, {"XDG_DATA_DIRS", nullptr}, {"PATH", nullptr}};
  const auto found = DesktopEnvironment::current();
  EXPECT_THAT(found.dataFolders, Contains("/usr/local/share"));
  EXPECT_THAT(found.searchPath, HasSubstr("/usr/bin"));
}

}  // namespace
}  // namespace tollvane
