#include "app/uninstall.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "browser/native_hosts.h"
#include "model/paths.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;

class UninstallTest : public testing::Test {
 protected:
  // A computer on which Tollvane was used.
  UninstallTest() {
    system.bundle.programs.insert("TollvaneBridge");
    system.files.contents["/bundle/TollvaneBridge"] = "bridge";
    for (const Browser browser : Browser::allCases)
      system.workspace.installed[std::string(browser.bundleID())] = "/apps/x";
    const Paths paths(system.locations, system.files);
    NativeHosts(system.files, system.locations, system.bundle, system.workspace, paths).installManifests();
    system.login.registerApplication(AskedBy::user);
    system.files.createDirectories(settings);
    system.files.contents[settings / "defaults.json"] = "{}";
    system.files.contents[own / "history.txt"] = "a line";
    system.files.contents[own / "bridge.sock"] = "";
    system.files.directories[own / "safari-inbox"] = true;
    system.locations.runtime = "/run/user/1";
    system.files.createDirectories("/run/user/1/Tollvane");
    system.files.contents["/run/user/1/Tollvane/bridge.sock"] = "";
  }
  Uninstalled run(bool all) { return uninstall(system.files, system.locations, system.login, settings, all); }

  const std::filesystem::path data = "/home/user/Application Support";
  const std::filesystem::path own = data / "Tollvane";
  const std::filesystem::path settings = "/home/user/.config/Tollvane";
  const std::filesystem::path hosts = data / "Chromium/NativeMessagingHosts";
  test::VirtualPlatform system;
};

TEST_F(UninstallTest, LoginManifestsAndBridgeAreTakenBackAndHistoryAndSettingsStay) {
  const Uninstalled result = run(false);
  EXPECT_THAT(result.left, IsEmpty());
  EXPECT_EQ(system.login.state, LoginStatus::notRegistered);
  for (const auto& [file, content] : system.files.contents) {
    EXPECT_NE(file.filename(), "com.quarnel.tollvane.json");
    EXPECT_TRUE(file.filename() != "TollvaneBridge" || file == "/bundle/TollvaneBridge") << file;
  }
  EXPECT_FALSE(system.files.exists(own / "bin"));
  EXPECT_FALSE(system.files.exists(own / "bridge.sock"));
  EXPECT_FALSE(system.files.exists("/run/user/1/Tollvane"));
  EXPECT_TRUE(system.files.exists(own / "history.txt"));
  EXPECT_TRUE(system.files.exists(settings / "defaults.json"));
  EXPECT_THAT(result.removed, Contains(hosts / "com.quarnel.tollvane.json"));
}

TEST_F(UninstallTest, ManifestsOfOtherProgramsStay) {
  system.files.contents[hosts / "com.example.other.json"] = "{}";
  run(true);
  EXPECT_TRUE(system.files.exists(hosts / "com.example.other.json"));
}

TEST_F(UninstallTest, WithAllNothingStaysInTollvanesFolders) {
  system.files.contents[settings / "defaults.json.corrupt"] = "x";
  system.files.contents[own / "history-1.txt"] = "older";
  EXPECT_THAT(run(true).left, IsEmpty());
  EXPECT_FALSE(system.files.exists(own));
  EXPECT_FALSE(system.files.exists(settings));
  EXPECT_TRUE(system.files.exists(data));
}

TEST_F(UninstallTest, ASecondTimeThereIsNothingToRemove) {
  run(true);
  const Uninstalled again = run(true);
  EXPECT_THAT(again.removed, IsEmpty());
  EXPECT_THAT(again.left, IsEmpty());
}

TEST_F(UninstallTest, WhatCannotBeRemovedIsTold) {
  system.files.readOnly = true;
  system.login.refusal = "The file is locked.";
  const Uninstalled result = run(false);
  EXPECT_THAT(result.removed, IsEmpty());
  EXPECT_THAT(result.left, Contains(own / "bin/TollvaneBridge"));
  EXPECT_THAT(result.left, Not(Contains(own / "history.txt")));
  EXPECT_EQ(result.loginFailure, "The file is locked.");
}

}  // namespace
}  // namespace tollvane
