// Browsers that no package installed: what the workspace knows of them by their programs.
#include "platform/linux/workspace/browser_programs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/platform/linux/apps/fake_system.h"

namespace tollvane {
namespace {

using test::FakeSystem;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::pair<Pid, std::string>> runningOf(FakeSystem& system, std::string_view bundleID) {
  std::vector<std::pair<Pid, std::string>> running;
  for (const auto& application : system.workspace().runningApplications(bundleID))
    running.emplace_back(application.pid, application.localizedName.value_or(""));
  return running;
}

TEST(BrowserPrograms, ABrowserWithoutADesktopEntryRunsUnderItsName) {
  FakeSystem system;
  system.process({.pid = 100, .executable = "/opt/firefox/firefox"});
  system.process({.pid = 101, .executable = "/opt/google/chrome-beta/chrome"});
  system.process({.pid = 102, .executable = "/opt/other/other"});
  EXPECT_THAT(runningOf(system, "org.mozilla.firefox"), ElementsAre(std::pair(100, "Firefox")));
  EXPECT_THAT(runningOf(system, "com.google.Chrome.beta"), ElementsAre(std::pair(101, "Google Chrome")));
  EXPECT_THAT(runningOf(system, "com.google.Chrome"), IsEmpty());
  EXPECT_THAT(runningOf(system, "com.apple.Safari"), IsEmpty());
  EXPECT_FALSE(system.workspace().urlForApplication("org.mozilla.firefox"));
}

// On Wayland we see no windows at all.
TEST(BrowserPrograms, ItIsAnOrdinaryApplicationWithAWindowOrWithout) {
  FakeSystem system;
  system.process({.pid = 100, .executable = "/opt/firefox/firefox"});
  system.process({.pid = 101, .executable = "/home/me/nightly/firefox"});
  system.windows.windows = {{101, "Navigator", "Nightly"}};
  for (const Pid pid : {100, 101}) {
    const auto application = system.workspace().runningApplication(pid);
    ASSERT_TRUE(application);
    EXPECT_EQ(application->localizedName, "Firefox");
    EXPECT_EQ(application->activationPolicy, ActivationPolicy::regular);
  }
  const auto all = system.workspace().regularApplications();
  EXPECT_EQ(all.size(), 2u);
}

TEST(BrowserPrograms, ItComesForwardByItsProcess) {
  FakeSystem system;
  system.process({.pid = 100, .executable = "/opt/firefox/firefox"});
  bool cameForward = false;
  system.workspace().activate(*system.workspace().runningApplication(100), "", [&](bool did) { cameForward = did; });
  EXPECT_TRUE(cameForward);
  ASSERT_EQ(system.raiser.asked.size(), 1u);
  EXPECT_EQ(system.raiser.asked[0].pid, 100);
}

TEST(BrowserPrograms, AnEntryOfTheUsersOwnIsTheBrowsers) {
  FakeSystem system;
  const std::string program = system.program("/opt/ff/firefox");
  const auto file =
      system.entry("my-firefox", "Name=My own Firefox\nExec=@/opt/ff/firefox %u\n", "/home/me/.local/share");
  system.environment.dataFolders.push_back(system.at("/home/me/.local/share"));
  system.process({.pid = 100, .executable = program});
  EXPECT_THAT(runningOf(system, "org.mozilla.firefox"), ElementsAre(std::pair(100, "My own Firefox")));
  EXPECT_EQ(system.workspace().urlForApplication("org.mozilla.firefox"), file);
}

TEST(BrowserPrograms, ABrowserHasANameForEachWayInWhichItIsInstalled) {
  FakeSystem system;
  system.program("/usr/lib/firefox-esr/firefox-esr");
  system.link("/usr/bin/firefox-esr", "../lib/firefox-esr/firefox-esr");
  system.program("/opt/ff/firefox");
  system.entry("firefox-esr", "Name=Firefox ESR\nExec=firefox-esr %u\n");
  system.entry("my-firefox", "Name=My own Firefox\nExec=@/opt/ff/firefox %u\n");
  EXPECT_THAT(system.workspace().names("org.mozilla.firefox"), ElementsAre("Firefox ESR", "My own Firefox"));
  EXPECT_THAT(system.workspace().names("org.mozilla.nightly"), IsEmpty());
}

TEST(BrowserPrograms, AWebApplicationIsNotTheBrowser) {
  FakeSystem system;
  system.program("/opt/chromium/chrome");
  system.entry("chat", "Name=Chat\nExec=@/opt/chromium/chrome --app-id=abc\n");
  system.entry("mail", "Name=Mail\nExec=@/opt/chromium/chrome --app=https://example.org\n");
  EXPECT_FALSE(system.workspace().urlForApplication("org.chromium.Chromium"));
}

TEST(BrowserPrograms, AnInstalledBrowserIsListedOnce) {
  FakeSystem system;
  system.program("/usr/lib/firefox/firefox");
  system.link("/usr/bin/firefox", "../lib/firefox/firefox");
  system.entry("firefox", "Name=Firefox Web Browser\nExec=firefox %u\n");
  system.process({.pid = 100, .executable = system.at("/usr/lib/firefox/firefox")});
  EXPECT_THAT(runningOf(system, "org.mozilla.firefox"), ElementsAre(std::pair(100, "Firefox Web Browser")));
  EXPECT_EQ(system.workspace().regularApplications().size(), 1u);
}

TEST(BrowserPrograms, ABrowserOfAnotherUserIsNobodys) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs the right to give files away";
  FakeSystem system;
  system.process({.pid = 100, .executable = "/opt/firefox/firefox"});
  ASSERT_EQ(::chown((system.processes().root() / "100").c_str(), 12345, 12345), 0);
  EXPECT_THAT(runningOf(system, "org.mozilla.firefox"), IsEmpty());
  EXPECT_FALSE(system.workspace().runningApplication(100));
}

}  // namespace
}  // namespace tollvane
