#include "platform/linux/apps/applications.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/linux/apps/fake_system.h"

namespace tollvane {
namespace {

using test::FakeProcess;
using test::FakeSystem;
using ::testing::Optional;

const std::string user = "/user.slice/user-1000.slice/user@1000.service/app.slice/";

class ApplicationsTest : public ::testing::Test {
 protected:
  // Makes an entry and a program of the same name.
  void install(const std::string& name, const std::string& more = "") {
    system.program("/usr/bin/" + name);
    system.entry(name, "Name=" + name + "\nExec=" + name + " %U\n" + more);
  }

  // The id of the application that `process` is credited to; "-" if it is credited to no application.
  std::string idOf(FakeProcess process) {
    process.pid = ++lastPid_;
    system.process(process);
    return system.idOf(process.pid).value_or("-");
  }

  FakeSystem system;

 private:
  Pid lastPid_ = 100;
};

TEST_F(ApplicationsTest, TheSandboxDecidesBeforeEverythingElse) {
  install("other");
  system.entry("org.example.Player", "Name=Player\nExec=/usr/bin/flatpak run org.example.Player\n");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/other"),
                  .cgroup = user + "app-other-1.scope",
                  .flatpakInfo = "[Application]\nname=org.example.Player\nruntime=runtime/org.x/x86_64/1\n"}),
            "org.example.Player");
  EXPECT_EQ(idOf({.executable = "/app/bin/x", .cgroup = user + "app-flatpak-org.example.Player-77.scope"}),
            "org.example.Player");
}

TEST_F(ApplicationsTest, ASandboxWithoutAnEntryIsKnownByItsId) {
  EXPECT_EQ(idOf({.executable = "/app/bin/x", .flatpakInfo = "[Application]\nname=org.example.Player\n"}),
            "org.example.Player");
  system.entry("org.example.Player.Main", "Name=Main\nExec=flatpak run x\nX-Flatpak=org.example.Player\n");
  EXPECT_EQ(idOf({.executable = "/app/bin/x", .flatpakInfo = "[Application]\nname=org.example.Player\n"}),
            "org.example.Player.Main");
}

TEST_F(ApplicationsTest, ABrokenSandboxDescriptionIsIgnored) {
  install("player");
  for (const char* info : {"nonsense", "[Runtime]\nruntime=x\n", "[Application]\n", "[Application]\nname=\n"})
    EXPECT_EQ(idOf({.executable = system.at("/usr/bin/player"), .flatpakInfo = info}), "player") << info;
}

TEST_F(ApplicationsTest, ASnapIsKnownByItsScope) {
  system.entry("firefox_firefox", "Name=Firefox\nExec=env X=y @/snap/bin/firefox %u\nX-SnapInstanceName=firefox\n");
  system.program("/usr/bin/snap");
  system.link("/snap/bin/firefox", "/usr/bin/snap");
  const std::string uuid = "-3b1f6e52-6a1c-4f0e-9f0e-0123456789ab.scope";
  EXPECT_EQ(idOf({.executable = "/snap/firefox/3000/usr/lib/firefox/firefox",
                  .cgroup = user + "snap.firefox.firefox" + uuid}),
            "firefox_firefox");
  EXPECT_EQ(idOf({.executable = "/snap/firefox/3000/gd", .cgroup = user + "snap.firefox.geckodriver" + uuid}),
            "firefox_firefox");
  EXPECT_EQ(idOf({.executable = "/snap/x/1/x", .cgroup = user + "snap.x.y" + uuid}), "x_y");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/snap")}), "-") << "the command of every snap is a link to it";
}

TEST_F(ApplicationsTest, TheEntryThatLaunchedAProcessCountsForThisProcessOnly) {
  install("player");
  install("shown");
  const std::string file = "GIO_LAUNCHED_DESKTOP_FILE=" + system.at("/usr/share/applications/shown.desktop");
  const std::string player = system.at("/usr/bin/player");
  system.process({.pid = 50, .executable = player, .environment = {file, "GIO_LAUNCHED_DESKTOP_FILE_PID=50"}});
  EXPECT_EQ(system.idOf(50), "shown");
  system.process({.pid = 51, .executable = player, .environment = {file, "GIO_LAUNCHED_DESKTOP_FILE_PID=50"}});
  EXPECT_EQ(system.idOf(51), "player") << "the variables are inherited from another process";
  system.process({.pid = 52, .executable = player, .environment = {file}});
  EXPECT_EQ(system.idOf(52), "player");
  system.process(
      {.pid = 53,
       .executable = player,
       .environment = {"GIO_LAUNCHED_DESKTOP_FILE=/elsewhere/x.desktop", "GIO_LAUNCHED_DESKTOP_FILE_PID=53"}});
  EXPECT_EQ(system.idOf(53), "player");
}

TEST_F(ApplicationsTest, TheUnitOwnsWhatRunsInIt) {
  install("org.example.Radio");
  EXPECT_EQ(idOf({.executable = "/usr/bin/backend", .cgroup = user + "app-gnome-org.example.Radio-12.scope"}),
            "org.example.Radio");
  EXPECT_EQ(idOf({.executable = "/usr/bin/dash",
                  .arguments = {"sh", "-c", "backend"},
                  .cgroup = user + "app-org.example.Radio@7.service"}),
            "org.example.Radio");
  EXPECT_EQ(idOf({.executable = "/usr/bin/backend", .cgroup = user + "app-gnome-not.Installed-12.scope"}), "-");
}

TEST_F(ApplicationsTest, ATerminalsUnitOwnsTheTerminalOnly) {
  install("term", "Categories=System;TerminalEmulator;\n");
  install("player");
  const std::string scope = user + "app-term-12.scope";
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/term"), .cgroup = scope}), "term");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/player"), .cgroup = scope}), "player");
  EXPECT_EQ(idOf({.executable = "/usr/bin/pw-cat", .cgroup = scope}), "-");
}

TEST_F(ApplicationsTest, ATerminalsServerIsTheTerminalWhateverItsProgramsName) {
  system.entry("org.gnome.Terminal", "Name=Terminal\nExec=gnome-terminal\nCategories=System;TerminalEmulator;\n");
  const std::string slice = user + "app-org.gnome.Terminal.slice/";
  EXPECT_EQ(
      idOf({.executable = "/usr/libexec/gnome-terminal-server", .cgroup = slice + "gnome-terminal-server.service"}),
      "org.gnome.Terminal");
  EXPECT_EQ(idOf({.executable = "/usr/bin/bash", .cgroup = slice + "vte-spawn-1234.scope"}), "-");
}

TEST_F(ApplicationsTest, AnEntryThatRunsInATerminalDoesNotOwnTheTerminal) {
  install("term", "Categories=System;TerminalEmulator;\n");
  install("editor", "Terminal=true\n");
  const std::string file = "GIO_LAUNCHED_DESKTOP_FILE=" + system.at("/usr/share/applications/editor.desktop");
  system.process({.pid = 50,
                  .executable = system.at("/usr/bin/term"),
                  .environment = {file, "GIO_LAUNCHED_DESKTOP_FILE_PID=50"},
                  .cgroup = user + "app-gnome-editor-50.scope"});
  EXPECT_EQ(system.idOf(50), "term");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/editor"), .cgroup = user + "app-gnome-editor-50.scope"}), "editor");
}

TEST_F(ApplicationsTest, ABrowserThatWasOpenedFromAnApplicationIsItself) {
  install("chat");
  install("browser", "Categories=Network;WebBrowser;\n");
  install("player");
  const std::string scope = user + "app-chat-12.scope";
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/browser"), .cgroup = scope}), "browser");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/player"), .cgroup = scope}), "chat");
}

TEST_F(ApplicationsTest, AWebApplicationsUnitNamesItAlthoughTheBrowserRunsIt) {
  install("browser", "Categories=Network;WebBrowser;\n");
  system.entry("browser-radio", "Name=Radio\nExec=browser --app-id=radio\n");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/browser"), .cgroup = user + "app-browser\\x2dradio-12.scope"}),
            "browser-radio");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/browser")}), "browser");
}

TEST_F(ApplicationsTest, AProgramBesideTheWrapperBelongsToTheApplication) {
  system.program("/opt/google/chrome/google-chrome");
  system.link("/usr/bin/google-chrome-stable", "/opt/google/chrome/google-chrome");
  system.entry("google-chrome", "Name=Google Chrome\nExec=@/usr/bin/google-chrome-stable %U\n");
  EXPECT_EQ(idOf({.executable = system.at("/opt/google/chrome/chrome")}), "google-chrome");
  EXPECT_EQ(idOf({.executable = system.at("/opt/google/chrome/sub/chrome_helper")}), "-");
}

TEST_F(ApplicationsTest, ProgramsInASharedDirectoryDoNotBelongTogether) {
  install("player");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/stranger")}), "-");
}

TEST_F(ApplicationsTest, AFolderOfSeveralProgramsTellsNothingAboutAnotherOne) {
  system.program("/opt/suite/write");
  system.program("/opt/suite/draw");
  system.entry("write", "Name=Write\nExec=@/opt/suite/write\n");
  system.entry("draw", "Name=Draw\nExec=@/opt/suite/draw\n");
  EXPECT_EQ(idOf({.executable = system.at("/opt/suite/helper")}), "-");
  EXPECT_EQ(idOf({.executable = system.at("/opt/suite/draw")}), "draw");
}

TEST_F(ApplicationsTest, AProgramOfTheSameNameElsewhereBelongsToTheWrapper) {
  install("chromium");
  EXPECT_EQ(idOf({.executable = system.at("/usr/lib/chromium/chromium")}), "chromium");
  EXPECT_EQ(idOf({.executable = system.at("/usr/lib/chromium/chromium") + " (deleted)"}), "chromium");
}

TEST_F(ApplicationsTest, TryExecAndTheWindowClassNameTheProgramToo) {
  system.program("/usr/bin/real-player");
  system.entry("player", "Name=Player\nExec=sh -c 'exec real-player'\nTryExec=real-player\n");
  system.entry("viewer", "Name=Viewer\nExec=sh -c 'view'\nStartupWMClass=Viewer-Bin\n");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/real-player")}), "player");
  EXPECT_EQ(idOf({.executable = "/usr/lib/viewer/viewer-bin"}), "viewer");
}

TEST_F(ApplicationsTest, AShellIsNoApplication) {
  system.program("/usr/bin/sh");
  system.program("/usr/bin/dash");
  system.entry("tool", "Name=Tool\nExec=sh -c 'tool --gui'\n");
  system.entry("shell", "Name=Shell\nExec=@/usr/bin/dash\nTerminal=true\n");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/dash"), .arguments = {"sh", "-c", "tool --gui"}}), "-");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/dash"), .arguments = {"dash"}}), "-");
}

TEST_F(ApplicationsTest, AnInterpreterIsCreditedToItsScript) {
  const std::string python = system.program("/usr/bin/python3.11");
  system.link("/usr/bin/python3", "python3.11");
  system.entry("python3.11", "Name=Python (v3.11)\nExec=@/usr/bin/python3.11\nTerminal=true\nNoDisplay=true\n");
  install("tuner");  // the entry runs a script
  system.program("/usr/share/gui/gui.py");
  system.link("/usr/bin/gui", "/usr/share/gui/gui.py");
  system.entry("gui", "Name=Gui\nExec=gui\n");  // the entry runs a link to a script
  system.program("/usr/share/mixer/mixer.py");
  system.entry(
      "mixer",
      "Name=Mixer\nExec=python3 @/usr/share/mixer/mixer.py %F\n");  // the entry runs an interpreter with a script
  system.entry("wrapped", "Name=Wrapped\nExec=wrapped\n");
  system.program("/usr/bin/wrapped");  // a shell script that runs the Python script
  system.program("/usr/share/wrapped/wrapped.py");
  const auto run = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "/usr/bin/python3");
    return idOf({.executable = python, .arguments = arguments});
  };
  EXPECT_EQ(run({system.at("/usr/bin/tuner"), "--x"}), "tuner");
  EXPECT_EQ(run({system.at("/usr/bin/gui")}), "gui");
  EXPECT_EQ(run({system.at("/usr/share/mixer/mixer.py")}), "mixer");
  EXPECT_EQ(run({system.at("/usr/share/mixer/helper.py")}), "mixer") << "it is beside the application's script";
  EXPECT_EQ(run({system.at("/usr/share/wrapped/wrapped.py")}), "wrapped");
  EXPECT_EQ(run({"-m", "tuner"}), "tuner");
  EXPECT_EQ(run({"-c", "import tuner"}), "-");
  EXPECT_EQ(run({}), "-");
  EXPECT_EQ(run({"/home/me/main.py"}), "-");
}

TEST_F(ApplicationsTest, CommonScriptNamesProveNothing) {
  install("main");
  EXPECT_EQ(idOf({.executable = "/usr/bin/python3.11", .arguments = {"python3", "/home/me/radio/main.py"}}), "-");
}

TEST_F(ApplicationsTest, AWindowsProgramIsKnownByItsName) {
  system.entry("wine-chess", "Name=Chess\nExec=env WINEPREFIX=\"/x\" wine \"C:\\\\\\\\Chess\\\\\\\\Chess.exe\"\n");
  EXPECT_EQ(idOf({.executable = "/usr/lib/wine/wine64-preloader", .arguments = {"C:\\Chess\\Chess.exe"}}),
            "wine-chess");
}

TEST_F(ApplicationsTest, TheEntryWithTheFewestArgumentsIsTheApplication) {
  system.program("/usr/bin/firefox");
  system.entry("a-private", "Name=Private\nExec=firefox --private-window %u\n");
  system.entry("firefox", "Name=Firefox\nExec=firefox %u\n");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/firefox")}), "firefox");
}

TEST_F(ApplicationsTest, TheVisibleEntryGoesBeforeTheHiddenOne) {
  system.program("/usr/bin/chrome");
  system.entry("a", "Name=A\nExec=chrome\nNoDisplay=true\n");
  system.entry("b", "Name=B\nExec=chrome --flag\n");
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/chrome")}), "b");
}

TEST_F(ApplicationsTest, AnEntryForOneDocumentOwnsThatDocumentsProcessOnly) {
  system.program("/usr/bin/mpv");
  system.entry("radio", "Name=Radio\nExec=mpv http://radio.example/live\n");
  const std::string mpv = system.at("/usr/bin/mpv");
  EXPECT_EQ(idOf({.executable = mpv, .arguments = {"mpv", "http://radio.example/live"}}), "radio");
  EXPECT_EQ(idOf({.executable = mpv, .arguments = {"mpv", "film.mkv"}}), "-");
}

TEST_F(ApplicationsTest, TheNamesOfOneToolAreDistinguished) {
  system.program("/usr/bin/pacat");
  for (const char* name : {"/usr/bin/paplay", "/usr/bin/parecord"}) system.link(name, "pacat");
  system.entry("play", "Name=Play\nExec=paplay %f\n");
  const std::string pacat = system.at("/usr/bin/pacat");
  EXPECT_EQ(idOf({.executable = pacat, .arguments = {"paplay", "x.wav"}}), "play");
  EXPECT_EQ(idOf({.executable = pacat, .arguments = {"pacat"}}), "-");
  EXPECT_EQ(idOf({.executable = pacat, .arguments = {"parecord"}}), "-");
  system.entry("record", "Name=Record\nExec=parecord %f\n");
  EXPECT_EQ(idOf({.executable = pacat, .arguments = {"paplay", "x.wav"}}), "play");
  EXPECT_EQ(idOf({.executable = pacat, .arguments = {"/x/parecord"}}), "record");
}

TEST_F(ApplicationsTest, AProcessThatHidesItsExecutableIsKnownByItsArguments) {
  system.program("/opt/google/chrome/google-chrome");
  system.entry("google-chrome", "Name=Google Chrome\nExec=@/opt/google/chrome/google-chrome %U\n");
  EXPECT_EQ(idOf({.arguments = {system.at("/opt/google/chrome/chrome") + " --type=utility --x=y"}}), "google-chrome");
  EXPECT_EQ(idOf({.arguments = {"chrome"}}), "-");
}

TEST_F(ApplicationsTest, MissingAndEndedProcessesAndInitAreNoApplications) {
  install("player");
  EXPECT_FALSE(system.idOf(99));
  EXPECT_FALSE(system.idOf(0));
  EXPECT_FALSE(system.idOf(-1));
  EXPECT_EQ(idOf({.executable = system.at("/usr/bin/player"), .state = 'Z'}), "-");
  system.process({.pid = 1, .executable = system.at("/usr/bin/player")});
  EXPECT_FALSE(system.idOf(1));
}

TEST_F(ApplicationsTest, AWindowLeadsToTheEntryOfItsClass) {
  system.entry("jetbrains-idea", "Name=IDEA\nExec=sh -c x\nStartupWMClass=jetbrains-idea\n");
  system.entry("org.gnome.Editor", "Name=Editor\nExec=sh -c x\n");
  system.windows.windows = {{200, "sun-awt", "jetbrains-idea"},
                            {201, "editor", "Org.gnome.Editor"},
                            {202, "unknown", "Unknown"},
                            {203, "only-instance", ""}};
  for (const Pid pid : {200, 201, 202, 203, 204}) system.process({.pid = pid, .executable = "/opt/jbr/bin/java"});
  EXPECT_EQ(system.idOf(200), "jetbrains-idea");
  EXPECT_EQ(system.idOf(201), "org.gnome.Editor");
  EXPECT_FALSE(system.idOf(202)) << "a window is an application, but without an id";
  EXPECT_TRUE(system.applications().of(202)->isRegular());
  EXPECT_EQ(system.applications().of(203)->windowClass, "only-instance");
  EXPECT_FALSE(system.applications().of(204));
}

TEST_F(ApplicationsTest, WindowsAreExaminedOnlyIfNoEntryDecides) {
  install("player");
  idOf({.executable = system.at("/usr/bin/player")});
  EXPECT_EQ(system.windows.questions, 0);
  idOf({.executable = "/usr/bin/stranger"});
  EXPECT_EQ(system.windows.questions, 1);
}

TEST_F(ApplicationsTest, ChangedEntriesAreAppliedToRunningPrograms) {
  install("player");
  const FakeProcess process{.executable = system.at("/usr/bin/player")};
  EXPECT_EQ(idOf(process), "player");
  std::filesystem::remove(system.at("/usr/share/applications/player.desktop"));
  EXPECT_EQ(idOf(process), "-");
  system.entry("better", "Name=Better\nExec=player\n");
  EXPECT_EQ(idOf(process), "better");
}

}  // namespace
}  // namespace tollvane
