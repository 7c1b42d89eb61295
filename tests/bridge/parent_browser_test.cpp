#include "bridge/parent_browser.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/support/temporary_directory.h"

namespace tollvane::bridge {
namespace {

std::string ofProgram(std::string path) { return bundleIdentifier({.executable = std::move(path)}); }

TEST(ParentBrowserTest, ProgramsOfPackagesAreKnown) {
  const std::map<std::string, std::string> bundles = {
      {"/opt/google/chrome/chrome", "com.google.Chrome"},
      {"/opt/google/chrome-beta/chrome", "com.google.Chrome.beta"},
      {"/opt/google/chrome-unstable/chrome", "com.google.Chrome.dev"},
      {"/opt/google/chrome-canary/chrome", "com.google.Chrome.canary"},
      {"/opt/microsoft/msedge/msedge", "com.microsoft.edgemac"},
      {"/opt/microsoft/msedge-beta/msedge", "com.microsoft.edgemac.Beta"},
      {"/opt/microsoft/msedge-dev/msedge", "com.microsoft.edgemac.Dev"},
      {"/opt/brave.com/brave/brave", "com.brave.Browser"},
      {"/opt/brave.com/brave-beta/brave", "com.brave.Browser.beta"},
      {"/opt/brave.com/brave-nightly/brave", "com.brave.Browser.nightly"},
      {"/usr/lib/chromium/chromium", "org.chromium.Chromium"},
      {"/usr/lib64/chromium-browser/chromium-browser", "org.chromium.Chromium"},
      {"/usr/lib/firefox-esr/firefox-esr", "org.mozilla.firefox"},
      {"/usr/lib/firefox/firefox", "org.mozilla.firefox"},
      {"/home/u/firefox/firefox-bin", "org.mozilla.firefox"},
      {"/usr/lib/firefox-devedition/firefox", "org.mozilla.firefoxdeveloperedition"},
      {"/usr/lib/firefox-nightly/firefox", "org.mozilla.nightly"},
      {"/usr/lib/firefox-beta/firefox-bin", "org.mozilla.firefoxbeta"},
      {"/opt/firefox-developer-edition/firefox", "org.mozilla.firefoxdeveloperedition"},
      {"/opt/vivaldi/vivaldi-bin", "com.vivaldi.Vivaldi"},
      {"/usr/lib/x86_64-linux-gnu/opera/opera", "com.operasoftware.Opera"},
  };
  for (const auto& [path, bundle] : bundles) EXPECT_EQ(ofProgram(path), bundle) << path;
}

TEST(ParentBrowserTest, UnpackedProgramsAreKnownWhereverTheyAre) {
  for (const auto* path : {"/opt/firefox/firefox", "/opt/ff-151.0/firefox", "/home/u/Downloads/x/firefox-bin"})
    EXPECT_EQ(ofProgram(path), "org.mozilla.firefox") << path;
  for (const auto* path : {"/opt/chromium/chrome", "/home/u/chrome-linux/chrome", "/srv/apps/chromium"})
    EXPECT_EQ(ofProgram(path), "org.chromium.Chromium") << path;
}

TEST(ParentBrowserTest, ProgramsOfSnapsAreKnown) {
  EXPECT_EQ(ofProgram("/snap/firefox/4173/usr/lib/firefox/firefox"), "org.mozilla.firefox");
  EXPECT_EQ(ofProgram("/snap/chromium/2890/usr/lib/chromium-browser/chrome"), "org.chromium.Chromium");
  EXPECT_EQ(ofProgram("/var/lib/snapd/snap/brave/401/opt/brave.com/brave/brave"), "com.brave.Browser");
}

TEST(ParentBrowserTest, OtherProgramsAreUnknown) {
  for (const auto* path : {"", "/bin/bash", "/usr/bin/firefox-like", "/opt/librewolf/librewolf", "/home/u/chrome"})
    EXPECT_EQ(ofProgram(path), "") << path;
}

TEST(ParentBrowserTest, AFlatpakTellsItsName) {
  const auto ofFlatpak = [](std::string info) {
    return bundleIdentifier({.executable = "/app/bin/cobalt", .flatpakInfo = std::move(info)});
  };
  EXPECT_EQ(ofFlatpak("[Application]\nname=org.mozilla.firefox\nruntime=x\n"), "org.mozilla.firefox");
  EXPECT_EQ(ofFlatpak("[Application]\nruntime=x\nname=com.microsoft.Edge"), "com.microsoft.edgemac");
  EXPECT_EQ(ofFlatpak("[Application]\nname=io.gitlab.librewolf-community\n"), "io.gitlab.librewolf-community");
  EXPECT_EQ(ofFlatpak("[Runtime]\nname=com.brave.Browser\n"), "com.brave.Browser");
}

TEST(ParentBrowserTest, AFlatpaksFileWithoutAValidNameIsIgnored) {
  for (const auto* info : {"", "[", "name=org.mozilla.firefox", "[Application]\n[Context]\nname=org.mozilla.firefox\n",
                           "[Application]\nname=\n", "[Application]\nname=a\"},{\"b\n", "[Application]\nname=a b\n"})
    EXPECT_EQ(bundleIdentifier({.flatpakInfo = info}), "") << info;
  EXPECT_EQ(bundleIdentifier({.flatpakInfo = "[Application]\nname=" + std::string(256, 'a')}), "");
}

TEST(ParentBrowserTest, AHintCountsOnlyIfTheProgramIsUnknown) {
  EXPECT_EQ(bundleIdentifier({.isChromium = true, .chromeDesktop = "chromium.desktop"}), "org.chromium.Chromium");
  EXPECT_EQ(bundleIdentifier({.isChromium = true, .chromeDesktop = "google-chrome.desktop"}), "com.google.Chrome");
  EXPECT_EQ(bundleIdentifier({.snapName = "firefox"}), "org.mozilla.firefox");
  EXPECT_EQ(bundleIdentifier({.isChromium = true, .snapName = "code", .chromeDesktop = "chromium.desktop"}),
            "org.chromium.Chromium");
  EXPECT_EQ(bundleIdentifier({.executable = "/opt/google/chrome/chrome",
                              .isChromium = true,
                              .snapName = "firefox",
                              .chromeDesktop = "chromium.desktop"}),
            "com.google.Chrome");
}

TEST(ParentBrowserTest, ChromiumsHintIsNotUsedForAFirefoxThatItStarted) {
  EXPECT_EQ(bundleIdentifier({.isChromium = false, .chromeDesktop = "chromium.desktop"}), "");
}

TEST(ParentBrowserTest, TheIntroductionLeavesOutWhatIsUnknown) {
  EXPECT_EQ(introduction({}), R"({"type":"bridge"})");
  EXPECT_EQ(introduction({.executable = "/opt/google/chrome/chrome"}),
            R"({"type":"bridge","bundleID":"com.google.Chrome"})");
}

class ParentProcessTest : public ::testing::Test {
 protected:
  ParentBrowser of(const std::vector<std::string>& arguments,
                   const std::map<std::string, std::string>& variables = {}) {
    return parentBrowser(ProcFs(proc.path()), 77, arguments, [&](const char* name) {
      const auto found = variables.find(name);
      return found == variables.end() ? nullptr : found->second.c_str();
    });
  }
  test::TemporaryDirectory proc;
};

TEST_F(ParentProcessTest, TheParentProcessIsExamined) {
  proc.write("77/root/.flatpak-info", "[Application]\nname=org.mozilla.firefox\n");
  std::filesystem::create_symlink("/app/lib/firefox/firefox-bin", proc / "77/exe");
  const ParentBrowser found = of({"/home/u/.mozilla/native-messaging-hosts/host.json", "tollvane@example.com"});
  EXPECT_EQ(found.executable, "/app/lib/firefox/firefox-bin");
  EXPECT_EQ(found.flatpakInfo, "[Application]\nname=org.mozilla.firefox\n");
  EXPECT_FALSE(found.isChromium);
}

TEST_F(ParentProcessTest, AProgramThatWasReplacedOnDiskIsStillKnown) {
  std::filesystem::create_directories(proc / "77");
  std::filesystem::create_symlink("/opt/google/chrome/chrome (deleted)", proc / "77/exe");
  EXPECT_EQ(bundleIdentifier(of({"chrome-extension://abc/"})), "com.google.Chrome");
}

TEST_F(ParentProcessTest, ChromiumIsKnownByTheExtensionsArgument) {
  EXPECT_TRUE(of({"chrome-extension://abc/"}).isChromium);
  EXPECT_TRUE(of({"chrome-extension://abc/", "--parent-window=0"}).isChromium);
  EXPECT_FALSE(of({}).isChromium);
}

TEST_F(ParentProcessTest, IfTheParentCannotBeReadTheHintsAreUsed) {
  const ParentBrowser found =
      of({"chrome-extension://abc/"}, {{"CHROME_DESKTOP", "chromium.desktop"}, {"SNAP_NAME", "x"}});
  EXPECT_EQ(found.executable, "");
  EXPECT_EQ(found.snapName, "x");
  EXPECT_EQ(bundleIdentifier(found), "org.chromium.Chromium");
}

TEST_F(ParentProcessTest, AProcessIsNamedByItsBootItsNumberAndItsStart) {
  const std::string zeros = "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 ";
  proc.write("77/stat", "77 (a b) c) S 1 " + zeros + "4711 0 0\n");
  EXPECT_EQ(processName(ProcFs(proc.path()), 77), "");
  proc.write("sys/kernel/random/boot_id", "0b-1f\n");
  EXPECT_EQ(processName(ProcFs(proc.path()), 77), "0b-1f-77-4711");
  EXPECT_EQ(processName(ProcFs(proc.path()), 78), "");
  proc.write("sys/kernel/random/boot_id", "a\",\"b");
  EXPECT_EQ(processName(ProcFs(proc.path()), 77), "");
}

}  // namespace
}  // namespace tollvane::bridge
