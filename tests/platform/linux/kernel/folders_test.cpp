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
  static std::vector<std::string> of(std::string_view bundleID) {
    const Environment environment{{"HOME", "/home/me"}, {"XDG_CONFIG_HOME", nullptr}};
    std::vector<std::string> folders;
    for (const auto& directory : XdgLocations().nativeHostDirectories(bundleID)) folders.push_back(directory.string());
    return folders;
  }
};

TEST_F(NativeHostDirectories, EachEditionLooksForManifestsInItsOwnFolder) {
  const std::pair<const char*, std::string> folders[] = {
      {"com.google.Chrome", "google-chrome"},
      {"com.google.Chrome.beta", "google-chrome-beta"},
      {"com.google.Chrome.dev", "google-chrome-unstable"},
      {"com.google.Chrome.canary", "google-chrome-canary"},
      {"com.microsoft.edgemac", "microsoft-edge"},
      {"com.microsoft.edgemac.Beta", "microsoft-edge-beta"},
      {"com.microsoft.edgemac.Dev", "microsoft-edge-dev"},
      {"com.brave.Browser", "BraveSoftware/Brave-Browser"},
      {"com.brave.Browser.beta", "BraveSoftware/Brave-Browser-Beta"},
      {"com.brave.Browser.nightly", "BraveSoftware/Brave-Browser-Nightly"},
      {"org.chromium.Chromium", "chromium"},
  };
  for (const auto& [bundleID, folder] : folders)
    EXPECT_THAT(of(bundleID), ElementsAre("/home/me/.config/" + folder + "/NativeMessagingHosts"));
}

TEST_F(NativeHostDirectories, AllEditionsOfFirefoxShareOneFolder) {
  for (const char* bundleID :
       {"org.mozilla.firefox", "org.mozilla.firefoxbeta", "org.mozilla.firefoxdeveloperedition", "org.mozilla.nightly"})
    EXPECT_THAT(of(bundleID), ElementsAre("/home/me/.mozilla/native-messaging-hosts")) << bundleID;
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
