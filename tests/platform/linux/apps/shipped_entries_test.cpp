// Browsers as their vendors and packagers install them: entry, wrapper and executable.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

#include "catalogue/browsers.h"
#include "tests/platform/linux/apps/fake_system.h"

namespace tollvane {
namespace {

using test::FakeSystem;

struct Shipped {
  const char* bundleID;
  const char* id;
  const char* entry;       // "@" is the root of the test's system
  const char* program;     // the file that Exec leads to, if it is a file
  const char* link;        // a link to `program`, in the search path
  const char* executable;  // of the running process
  const char* cgroup;
  const char* name;
};

std::ostream& operator<<(std::ostream& out, const Shipped& row) { return out << row.id; }

constexpr const char* session = "/user.slice/user-1000.slice/session-2.scope";
constexpr const char* flatpak = "/user.slice/user-1000.slice/user@1000.service/app.slice/app-flatpak-";
constexpr const char* snap = "/user.slice/user-1000.slice/user@1000.service/app.slice/snap.";

const Shipped shippedEntries[] = {
    {"org.chromium.Chromium", "chromium",
     "Name=Chromium Web Browser\nExec=@/usr/bin/chromium %U\nTerminal=false\nStartupWMClass=chromium\n"
     "Categories=Network;WebBrowser;\nX-MultipleArgs=false\n",
     "/usr/bin/chromium", nullptr, "@/usr/lib/chromium/chromium", session, "Chromium Web Browser"},
    {"org.mozilla.firefox", "firefox-esr",
     "Name=Firefox ESR\nExec=@/usr/lib/firefox-esr/firefox-esr %u\nTerminal=false\nX-MultipleArgs=false\n"
     "Categories=Network;WebBrowser;\nStartupWMClass=firefox-esr\nStartupNotify=true\n",
     "/usr/lib/firefox-esr/firefox-esr", "/usr/bin/firefox-esr", "@/usr/lib/firefox-esr/firefox-esr", session,
     "Firefox ESR"},
    {"org.mozilla.firefox", "firefox",
     "Name=Firefox\nExec=firefox %u\nTerminal=false\nCategories=GNOME;GTK;Network;WebBrowser;\n",
     "/usr/lib/firefox/firefox", "/usr/bin/firefox", "@/usr/lib/firefox/firefox", session, "Firefox"},
    {"com.google.Chrome", "google-chrome",
     "Name=Google Chrome\nExec=@/usr/bin/google-chrome-stable %U\nStartupNotify=true\nTerminal=false\n"
     "Categories=Network;WebBrowser;\n",
     "/opt/google/chrome/google-chrome", "/usr/bin/google-chrome-stable", "@/opt/google/chrome/chrome", session,
     "Google Chrome"},
    {"com.microsoft.edgemac", "microsoft-edge",
     "Name=Microsoft Edge\nExec=@/usr/bin/microsoft-edge-stable %U\nStartupNotify=true\nTerminal=false\n"
     "Categories=Network;WebBrowser;\n",
     "/opt/microsoft/msedge/microsoft-edge", "/usr/bin/microsoft-edge-stable", "@/opt/microsoft/msedge/msedge", session,
     "Microsoft Edge"},
    {"com.brave.Browser", "brave-browser",
     "Name=Brave Web Browser\nExec=@/usr/bin/brave-browser-stable %U\nStartupNotify=true\nTerminal=false\n"
     "Categories=Network;WebBrowser;\nStartupWMClass=brave-browser\n",
     "/opt/brave.com/brave/brave-browser", "/usr/bin/brave-browser-stable", "@/opt/brave.com/brave/brave", session,
     "Brave Web Browser"},
    {"org.mozilla.firefox", "org.mozilla.firefox",
     "Name=Firefox\nExec=@/usr/bin/flatpak run --branch=stable --arch=x86_64 --command=firefox --file-forwarding "
     "org.mozilla.firefox @%u\nStartupWMClass=org.mozilla.firefox\nX-Flatpak=org.mozilla.firefox\n",
     "/usr/bin/flatpak", nullptr, "/app/lib/firefox/firefox", flatpak, "Firefox"},
    {"com.google.Chrome", "com.google.Chrome",
     "Name=Google Chrome\nExec=@/usr/bin/flatpak run --branch=stable --arch=x86_64 --command=/app/bin/chrome "
     "--file-forwarding com.google.Chrome @%U\nX-Flatpak=com.google.Chrome\n",
     "/usr/bin/flatpak", nullptr, "/app/extra/chrome", flatpak, "Google Chrome"},
    {"org.mozilla.firefox", "firefox_firefox",
     "Name=Firefox Web Browser\nExec=env BAMF_DESKTOP_FILE_HINT=/var/lib/snapd/desktop/applications/"
     "firefox_firefox.desktop @/snap/bin/firefox %u\nX-SnapInstanceName=firefox\nTerminal=false\n",
     "/usr/bin/snap", "/snap/bin/firefox", "/snap/firefox/4848/usr/lib/firefox/firefox", snap, "Firefox Web Browser"},
    {"org.chromium.Chromium", "chromium_chromium",
     "Name=Chromium Web Browser\nExec=env BAMF_DESKTOP_FILE_HINT=/var/lib/snapd/desktop/applications/"
     "chromium_chromium.desktop @/snap/bin/chromium %U\nX-SnapInstanceName=chromium\nTerminal=false\n",
     "/usr/bin/snap", "/snap/bin/chromium", "/snap/chromium/2900/usr/lib/chromium-browser/chrome", snap,
     "Chromium Web Browser"},
};

class ShippedBrowser : public ::testing::TestWithParam<Shipped> {
 protected:
  void SetUp() override {
    const Shipped& row = GetParam();
    system.entry(row.id, row.entry);
    if (row.program != nullptr) system.program(row.program);
    if (row.link != nullptr) system.link(row.link, row.program);
    std::string executable = row.executable;
    if (executable.starts_with('@')) executable = system.at(executable.substr(1));
    std::string cgroup = row.cgroup;
    if (row.cgroup == flatpak) cgroup += std::string(row.id) + "-4711.scope";
    if (row.cgroup == snap) {
      std::string name = row.id;
      name[name.find('_')] = '.';
      cgroup += name + "-3b1f6e52-6a1c-4f0e-9f0e-0123456789ab.scope";
    }
    // The browser, and its younger process that plays sounds, whose id may be the lower one.
    system.process({.pid = 500, .executable = executable, .cgroup = cgroup, .startTime = 100});
    system.process({.pid = 400,
                    .parent = 500,
                    .executable = executable,
                    .arguments = {executable + " --type=utility --utility-sub-type=audio"},
                    .cgroup = cgroup,
                    .command = "Utility Process",
                    .startTime = 200});
    system.process({.pid = 450, .executable = "/usr/bin/bystander", .cgroup = session});
  }

  FakeSystem system;
};

TEST_P(ShippedBrowser, IsNamedByItsEntry) {
  for (const Pid pid : {500, 400}) {
    const auto application = system.workspace().runningApplication(pid);
    ASSERT_TRUE(application) << pid;
    EXPECT_EQ(application->localizedName, GetParam().name);
    EXPECT_EQ(application->activationPolicy, ActivationPolicy::regular);
  }
  EXPECT_FALSE(system.workspace().runningApplication(450));
}

TEST_P(ShippedBrowser, IsFoundByItsBundleIdentifierWithTheOldestProcessFirst) {
  const auto running = system.workspace().runningApplications(GetParam().bundleID);
  ASSERT_EQ(running.size(), 2u);
  EXPECT_EQ(running[0].pid, 500);
  EXPECT_EQ(running[1].pid, 400);
  const auto url = system.workspace().urlForApplication(GetParam().bundleID);
  ASSERT_TRUE(url);
  EXPECT_EQ(url->filename(), std::string(GetParam().id) + ".desktop");
  EXPECT_EQ(system.workspace().displayName(*url), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(All, ShippedBrowser, ::testing::ValuesIn(shippedEntries), [](const auto& shipped) {
  std::string name = shipped.param.id;
  for (char& c : name) {
    if (c == '.' || c == '-' || c == '_') c = 'X';
  }
  return name;
});

TEST(BundleIds, BrowsersOfOtherSystemsHaveNoEntries) {
  EXPECT_TRUE(desktopIdsOfBundle("com.apple.Safari").empty());
  EXPECT_TRUE(desktopIdsOfBundle("company.thebrowser.Browser").empty());
  EXPECT_TRUE(desktopIdsOfBundle("").empty());
}

TEST(BundleIds, UnknownIdentifiersAreTriedAsTheyAre) {
  EXPECT_THAT(desktopIdsOfBundle("org.example.Player"), ::testing::ElementsAre("org.example.Player"));
  FakeSystem system;
  system.program("/usr/bin/player");
  system.entry("org.example.Player", "Name=Player\nExec=player\n");
  for (const char* id : {"org.example.Player", "org.example.Player.desktop", "org.Example.player"})
    EXPECT_TRUE(system.workspace().urlForApplication(id)) << id;
  EXPECT_FALSE(system.workspace().urlForApplication("org.example.Other"));
}

TEST(OfficeSuite, OfManyEntriesForOneProgramTheOneWithoutArgumentsIsChosen) {
  FakeSystem system;
  system.program("/usr/lib/libreoffice/program/soffice");
  system.link("/usr/bin/libreoffice", "/usr/lib/libreoffice/program/soffice");
  system.entry("libreoffice-writer", "Name=LibreOffice Writer\nExec=libreoffice --writer %U\n");
  system.entry("libreoffice-calc", "Name=LibreOffice Calc\nExec=libreoffice --calc %U\n");
  system.entry("libreoffice-startcenter", "Name=LibreOffice\nExec=libreoffice %U\n");
  system.process({.pid = 100, .executable = system.at("/usr/lib/libreoffice/program/soffice.bin")});
  EXPECT_EQ(system.workspace().runningApplication(100)->localizedName, "LibreOffice");
}

}  // namespace
}  // namespace tollvane
