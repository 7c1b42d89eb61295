#include "browser/native_hosts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/json_value.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::ElementsAre;

const std::filesystem::path support = "/home/user/Application Support";
const std::filesystem::path installed = support / "Tollvane/bin/TollvaneBridge";
const std::filesystem::path fresh = support / "Tollvane/bin/TollvaneBridge.new";

class NativeHostsTest : public testing::Test {
 protected:
  NativeHostsTest() {
    system.bundle.programs.insert("TollvaneBridge");
    system.files.contents["/bundle/TollvaneBridge"] = "bridge 2";
  }
  void install(Browser browser) { system.workspace.installed[std::string(browser.bundleID())] = "/apps/x"; }
  void installAll() {
    for (const Browser browser : Browser::allCases) install(browser);
  }
  std::filesystem::path manifestOf(std::string_view directory) const {
    return support / directory / "com.quarnel.tollvane.json";
  }
  nlohmann::json readManifest(std::string_view directory) {
    return nlohmann::json::parse(system.files.contents.at(manifestOf(directory)));
  }

  test::VirtualPlatform system;
  Paths paths{system.locations, system.files};
  NativeHosts hosts{system.files, system.locations, system.bundle, system.workspace, paths};
};

TEST_F(NativeHostsTest, TheBridgeIsCopiedToAPlaceThatStays) {
  EXPECT_EQ(hosts.installedBridgePath(), installed.string());
  EXPECT_EQ(system.files.contents.at(installed), "bridge 2");
  EXPECT_FALSE(system.files.contents.contains(fresh));
}

TEST_F(NativeHostsTest, ABridgeThatIsThereAlreadyIsNotCopiedAgain) {
  hosts.installedBridgePath();
  EXPECT_EQ(system.files.copies, 1);
  install(Browser::chrome);
  hosts.installManifests();
  EXPECT_EQ(readManifest("Google/Chrome/NativeMessagingHosts")["path"], installed.string());
  EXPECT_EQ(system.files.copies, 1);
}

TEST_F(NativeHostsTest, AnOldBridgeIsReplacedEvenIfAStaleCopyIsInTheWay) {
  hosts.installedBridgePath();
  system.files.contents["/bundle/TollvaneBridge"] = "bridge 3";
  system.files.contents[fresh] = "half a bri";
  EXPECT_EQ(hosts.installedBridgePath(), installed.string());
  EXPECT_EQ(system.files.contents.at(installed), "bridge 3");
  EXPECT_FALSE(system.files.contents.contains(fresh));
}

TEST_F(NativeHostsTest, IfNothingCanBeWrittenTheBundlesOwnBridgeIsUsed) {
  system.files.readOnly = true;
  EXPECT_EQ(hosts.installedBridgePath(), "/bundle/TollvaneBridge");
}

TEST_F(NativeHostsTest, AFullDiskOrAFailedRenameFallsBackToo) {
  system.files.full = true;
  EXPECT_EQ(hosts.installedBridgePath(), "/bundle/TollvaneBridge");
  system.files.full = false;
  system.files.cannotRename = true;
  install(Browser::chrome);
  hosts.installManifests();
  EXPECT_EQ(readManifest("Google/Chrome/NativeMessagingHosts")["path"], "/bundle/TollvaneBridge");
}

TEST_F(NativeHostsTest, IfTheHomeMayHoldNoProgramsTheBundlesOwnBridgeIsUsed) {
  system.files.noPrograms = true;
  EXPECT_EQ(hosts.installedBridgePath(), "/bundle/TollvaneBridge");
  EXPECT_EQ(hosts.installedBridgePath(), "/bundle/TollvaneBridge") << "the copy is there already";
}

TEST_F(NativeHostsTest, ABundleWithoutABridgeWritesNoManifests) {
  system.bundle.programs.clear();
  installAll();
  const auto before = system.files.contents;
  hosts.installManifests();
  EXPECT_EQ(hosts.installedBridgePath(), std::nullopt);
  EXPECT_EQ(system.files.contents, before);
}

TEST_F(NativeHostsTest, EveryInstalledBrowserButSafariGetsItsManifest) {
  installAll();
  hosts.installManifests();
  int manifests = 0;
  for (const auto& [path, bytes] : system.files.contents) manifests += path.extension() == ".json";
  EXPECT_EQ(manifests, 6);
  EXPECT_TRUE(system.files.contents.contains(manifestOf("Mozilla/NativeMessagingHosts")));
}

TEST_F(NativeHostsTest, AChromiumManifestNamesTheThreeExtensionsInOrder) {
  installAll();
  hosts.installManifests();
  for (const char* directory : {"Google/Chrome/NativeMessagingHosts", "Microsoft Edge/NativeMessagingHosts",
                                "BraveSoftware/Brave-Browser/NativeMessagingHosts",
                                "Arc/User Data/NativeMessagingHosts", "Chromium/NativeMessagingHosts"}) {
    EXPECT_EQ(readManifest(directory), (nlohmann::json{
                                           {"name", "com.quarnel.tollvane"},
                                           {"description", "Tollvane browser bridge"},
                                           {"path", installed.string()},
                                           {"type", "stdio"},
                                           {"allowed_origins",
                                            {"chrome-extension://kembcdlbgbcnnchcnbdhbmbhbejnedjf/",
                                             "chrome-extension://dgldcbgpnkooljhfhcjpkojcdnfkepnb/",
                                             "chrome-extension://ckklpoccipcbjojmlaolfdpbgjehmmpc/"}},
                                       }));
  }
}

TEST_F(NativeHostsTest, ABundleMayNameFurtherExtensions) {
  install(Browser::chrome);
  system.bundle.lists["TollvaneChromiumExtensionIDs"] = {"aaaabbbbccccddddeeeeffffgggghhhh"};
  hosts.installManifests();
  const auto origins = readManifest("Google/Chrome/NativeMessagingHosts")["allowed_origins"];
  ASSERT_EQ(origins.size(), 4u);
  EXPECT_EQ(origins[0], "chrome-extension://kembcdlbgbcnnchcnbdhbmbhbejnedjf/");
  EXPECT_EQ(origins[3], "chrome-extension://aaaabbbbccccddddeeeeffffgggghhhh/");
}

TEST_F(NativeHostsTest, FirefoxsManifestNamesTheAddOnAndNoOrigins) {
  install(Browser::firefox);
  hosts.installManifests();
  const auto manifest = readManifest("Mozilla/NativeMessagingHosts");
  EXPECT_EQ(manifest["allowed_extensions"], nlohmann::json({"tollvane@quarnel.com"}));
  EXPECT_FALSE(manifest.contains("allowed_origins"));
  EXPECT_EQ(manifest["path"], installed.string());
}

TEST_F(NativeHostsTest, AManifestIsReplacedInOneStepAndOnlyIfItChanges) {
  install(Browser::chrome);
  hosts.installManifests();
  hosts.installManifests();
  EXPECT_EQ(system.files.atomicWrites, 1);
  system.bundle.lists["TollvaneChromiumExtensionIDs"] = {"aaaabbbbccccddddeeeeffffgggghhhh"};
  hosts.installManifests();
  EXPECT_EQ(system.files.atomicWrites, 2);
}

TEST_F(NativeHostsTest, AManifestIsWrittenForPeopleToRead) {
  install(Browser::firefox);
  hosts.installManifests();
  const auto& text = system.files.contents.at(manifestOf("Mozilla/NativeMessagingHosts"));
  EXPECT_TRUE(text.starts_with("{\n  \"allowed_extensions\""));
}

TEST_F(NativeHostsTest, ABrowserThatWasInstalledBeforeGetsAManifestAndAnyOtherDoesNot) {
  system.files.createDirectories(support / "Google/Chrome");
  hosts.installManifests();
  EXPECT_TRUE(system.files.contents.contains(manifestOf("Google/Chrome/NativeMessagingHosts")));
  EXPECT_FALSE(system.files.contents.contains(manifestOf("Chromium/NativeMessagingHosts")));
}

TEST_F(NativeHostsTest, AnEditionGetsItsManifestWithoutTheMainReleaseAndTheMainReleaseGetsNone) {
  system.locations.nativeHosts["com.google.Chrome.beta"] = "Google/Chrome Beta/NativeMessagingHosts";
  system.workspace.installed["com.google.Chrome.beta"] = "/apps/beta";
  hosts.installManifests();
  EXPECT_TRUE(system.files.contents.contains(manifestOf("Google/Chrome Beta/NativeMessagingHosts")));
  EXPECT_FALSE(system.files.contents.contains(manifestOf("Google/Chrome/NativeMessagingHosts")));
}

TEST_F(NativeHostsTest, ABrowserThatRunsGetsItsManifestEvenIfItWasNeverInstalled) {
  system.workspace.addRunning(10, "Firefox", ActivationPolicy::regular, "org.mozilla.firefox");
  hosts.installManifests();
  EXPECT_EQ(readManifest("Mozilla/NativeMessagingHosts")["allowed_extensions"],
            nlohmann::json({"tollvane@quarnel.com"}));
}

TEST_F(NativeHostsTest, AManifestIsWrittenAnewAtEachLaunch) {
  install(Browser::firefox);
  hosts.installManifests();
  system.files.contents[manifestOf("Mozilla/NativeMessagingHosts")] = "old";
  hosts.installManifests();
  EXPECT_EQ(readManifest("Mozilla/NativeMessagingHosts")["type"], "stdio");
}

TEST_F(NativeHostsTest, AManifestOfABundleThatWasElsewhereIsReplaced) {
  install(Browser::chrome);
  system.files.createDirectories(support / "Google/Chrome/NativeMessagingHosts");
  system.files.contents[manifestOf("Google/Chrome/NativeMessagingHosts")] =
      NativeHosts::manifest(Browser::chrome, "/old/place/TollvaneBridge", system.bundle);
  hosts.installManifests();
  EXPECT_EQ(readManifest("Google/Chrome/NativeMessagingHosts")["path"], installed.string());
}

TEST_F(NativeHostsTest, TheManifestForAllUsersDiffersFromTheUsersOwnOnlyInThePath) {
  installAll();
  hosts.installManifests();
  for (const auto& [browser, directory] : {std::pair{Browser(Browser::chromium), "Chromium/NativeMessagingHosts"},
                                           std::pair{Browser(Browser::firefox), "Mozilla/NativeMessagingHosts"}}) {
    auto own = readManifest(directory);
    const auto forAll = NativeHosts::manifest(browser, "/usr/lib/tollvane/TollvaneBridge", system.bundle);
    own["path"] = "/usr/lib/tollvane/TollvaneBridge";
    EXPECT_EQ(own, nlohmann::json::parse(forAll));
  }
}

}  // namespace
}  // namespace tollvane
