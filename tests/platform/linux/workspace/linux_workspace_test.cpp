#include "platform/linux/workspace/linux_workspace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>

#include "tests/platform/linux/apps/fake_system.h"
#include "tests/support/environment.h"

namespace tollvane {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::FakeSystem;

TEST(LinuxWorkspace, AProcessWithoutARegularEntryIsAnAccessoryWithAName) {
  FakeSystem system;
  for (const char* name : {"hidden", "tool", "foreign", "plain"}) system.program(std::string("/usr/bin/") + name);
  system.entry("hidden", "Name=Hidden One\nExec=hidden\nNoDisplay=true\n");
  system.entry("tool", "Name=Tool\nExec=tool\nTerminal=true\n");
  system.entry("foreign", "Name=Foreign\nExec=foreign\nOnlyShowIn=Elsewhere;\n");
  system.entry("plain", "Name=Plain\nExec=plain\n");
  Pid pid = 100;
  for (const char* name : {"hidden", "tool", "foreign", "plain"})
    system.process({.pid = pid++, .executable = system.at(std::string("/usr/bin/") + name)});
  const auto& workspace = system.workspace();
  for (const Pid accessory : {100, 101, 102})
    EXPECT_EQ(workspace.runningApplication(accessory)->activationPolicy, ActivationPolicy::accessory);
  EXPECT_EQ(workspace.runningApplication(100)->localizedName, "Hidden One");
  EXPECT_EQ(workspace.runningApplication(103)->activationPolicy, ActivationPolicy::regular);
}

TEST(LinuxWorkspace, AWindowMakesAProcessRegular) {
  FakeSystem system;
  system.program("/usr/bin/hidden");
  system.entry("hidden", "Name=Hidden One\nExec=hidden\nNoDisplay=true\n");
  system.process({.pid = 100, .executable = system.at("/usr/bin/hidden")});
  system.process({.pid = 101, .executable = "/home/me/radio"});
  system.process({.pid = 102, .executable = "/usr/bin/python3.11", .arguments = {"python3", "/home/me/radio.py"}});
  system.process({.pid = 103, .executable = "/home/me/nameless"});
  system.windows.windows = {{100, "x", "X"}, {101, "radio", "Radio\xff"}, {102, "python3", "python3"}, {103, "", ""}};
  const auto named = [&](Pid pid) {
    const auto application = system.workspace().runningApplication(pid);
    EXPECT_EQ(application->activationPolicy, ActivationPolicy::regular);
    return application->localizedName.value_or("");
  };
  EXPECT_EQ(named(100), "Hidden One");
  EXPECT_EQ(named(101), "Radio\uFFFD");
  EXPECT_EQ(named(102), "radio.py") << "it must not be named after the interpreter";
  EXPECT_EQ(named(103), "nameless");
}

TEST(LinuxWorkspace, ASandboxWithoutAnEntryIsNamedByTheEndOfItsId) {
  FakeSystem system;
  system.process({.pid = 100, .executable = "/app/x", .flatpakInfo = "[Application]\nname=org.example.Player\n"});
  const auto application = system.workspace().runningApplication(100);
  EXPECT_EQ(application->localizedName, "Player");
  EXPECT_EQ(application->activationPolicy, ActivationPolicy::accessory);
}

TEST(LinuxWorkspace, AnInterpretersOwnEntryIsNeverTheApplication) {
  FakeSystem system;
  const std::string python = system.program("/usr/bin/python3.11");
  system.entry("python3.11", "Name=Python\nExec=@/usr/bin/python3.11\n");
  system.process({.pid = 100, .executable = python, .arguments = {"python3", "/home/me/x.py"}});
  system.process({.pid = 101, .executable = python, .arguments = {"python3"}});
  system.windows.windows = {{101, "python3.11", "python3.11"}};
  EXPECT_FALSE(system.workspace().runningApplication(100));
  EXPECT_NE(system.workspace().runningApplication(101)->localizedName, "Python");
}

TEST(LinuxWorkspace, NamesLeadToVisibleEntriesOnly) {
  FakeSystem system;
  system.program("/usr/bin/player");
  const auto file = system.entry("player", "Name=My Player\nExec=player\n");
  system.entry("aaa", "Name=My Player\nExec=aaa\nNoDisplay=true\n");
  const auto& workspace = system.workspace();
  EXPECT_EQ(workspace.urlForApplicationNamed("My Player"), file);
  EXPECT_FALSE(workspace.urlForApplicationNamed("my player"));
  EXPECT_FALSE(workspace.urlForApplicationNamed("My"));
  EXPECT_FALSE(workspace.urlForApplicationNamed(""));
}

TEST(LinuxWorkspace, AnApplicationWhoseProgramIsMissingIsNotThereToBeOpened) {
  FakeSystem system;
  system.entry("player", "Name=Player\nExec=player\n");
  system.entry("firefox", "Name=Firefox\nExec=firefox\n");
  const auto service = system.entry("service", "Name=Service\nDBusActivatable=true\n");
  EXPECT_FALSE(system.workspace().urlForApplicationNamed("Player"));
  EXPECT_FALSE(system.workspace().urlForApplication("org.mozilla.firefox"));
  EXPECT_TRUE(system.workspace().urlForApplication("player")) << "which names the sender of a notification";
  EXPECT_EQ(system.workspace().urlForApplicationNamed("Service"), service);
  FakeSystem other;
  other.program("/usr/bin/player");
  const auto player = other.entry("player", "Name=Player\nExec=player\n");
  EXPECT_EQ(other.workspace().urlForApplicationNamed("Player"), player);
}

TEST(LinuxWorkspace, DisplayNamesComeFromEntriesElseFromThePath) {
  FakeSystem system;
  const auto file = system.entry("player", "Name=My Player\nExec=player\n");
  test::writeFile(system.at("/loose.desktop"), "[Desktop Entry]\nType=Application\nName=Loose\n");
  const auto& workspace = system.workspace();
  EXPECT_EQ(workspace.displayName(file), "My Player");
  EXPECT_EQ(workspace.displayName(system.at("/loose.desktop")), "Loose");
  EXPECT_EQ(workspace.displayName("/nowhere/gone.desktop"), "gone.desktop");
  EXPECT_EQ(workspace.displayName("/usr/bin/mpv"), "mpv");
  EXPECT_EQ(workspace.displayName("/opt/Example/"), "Example");
  EXPECT_EQ(workspace.displayName("/opt/caf\xe9"), "caf\uFFFD");
  EXPECT_EQ(workspace.displayName(""), "");
}

std::vector<Pid> pidsOf(FakeSystem& system, std::string_view bundleID) {
  std::vector<Pid> pids;
  for (const auto& application : system.workspace().runningApplications(bundleID)) pids.push_back(application.pid);
  return pids;
}

TEST(RunningApplications, AProcessKnownByItsUnitAloneIsFoundToo) {
  FakeSystem system;
  system.program("/usr/bin/radio");  // a script that starts a program of another name
  system.entry("radio", "Name=Radio\nExec=radio\n");
  const std::string unit = "/user.slice/user-1000.slice/user@1000.service/app.slice/app-gnome-radio-7.scope";
  system.process({.pid = 100, .executable = "/usr/lib/other/backend", .cgroup = unit});
  system.process({.pid = 101, .executable = "/usr/lib/other/backend"});
  EXPECT_EQ(pidsOf(system, "radio"), std::vector<Pid>{100});
}

TEST(RunningApplications, ScriptsAndWindowsAreFoundToo) {
  FakeSystem system;
  system.program("/usr/bin/tuner");
  system.entry("tuner", "Name=Tuner\nExec=tuner\nStartupWMClass=TunerWindow\n");
  system.process(
      {.pid = 100, .executable = "/usr/bin/python3.11", .arguments = {"python3", system.at("/usr/bin/tuner")}});
  system.process({.pid = 101, .executable = "/usr/lib/other/viewer"});
  system.process({.pid = 102, .executable = "/usr/lib/other/viewer"});
  system.windows.windows = {{101, "x", "TunerWindow"}};
  EXPECT_EQ(pidsOf(system, "tuner"), (std::vector<Pid>{100, 101}));
}

TEST(RunningApplications, AnApplicationInAContainerIsFoundWhateverItsExecutableIs) {
  FakeSystem system;
  system.entry("org.example.Player", "Name=Player\nExec=/usr/bin/flatpak run org.example.Player\n");
  const std::string python = system.program("/usr/bin/python3.11");
  const std::string info = "[Application]\nname=org.example.Player\n";
  system.process({.pid = 100, .executable = "/app/bin/player", .flatpakInfo = info});
  system.process({.pid = 101, .executable = python, .arguments = {"python3", "/app/x.py"}, .flatpakInfo = info});
  system.process({.pid = 102, .executable = "/usr/bin/only-in-the-runtime", .flatpakInfo = info});
  system.process({.pid = 103, .executable = "/app/bin/player", .flatpakInfo = "[Application]\nname=org.x.Other\n"});
  EXPECT_EQ(pidsOf(system, "org.example.Player"), (std::vector<Pid>{100, 101, 102}));
}

TEST(RunningApplications, ABrowsersWrapperScriptIsNotTheBrowser) {
  FakeSystem system;
  system.program("/usr/bin/chromium");
  system.entry("chromium", "Name=Chromium\nExec=@/usr/bin/chromium %U\n");
  system.process({.pid = 100,
                  .executable = "/usr/bin/dash",
                  .arguments = {"/bin/sh", system.at("/usr/bin/chromium")},
                  .startTime = 1});
  system.process({.pid = 101, .parent = 100, .executable = "/usr/lib/chromium/chromium", .startTime = 2});
  EXPECT_EQ(pidsOf(system, "org.chromium.Chromium"), std::vector<Pid>{101});
}

TEST(RunningApplications, AnEntryThatIsRewrittenMeanwhileLosesNoProcess) {
  FakeSystem system;
  system.program("/usr/bin/player");
  const auto file = system.entry("player", "Name=Old\nExec=player\n");
  for (const Pid pid : {100, 101}) system.process({.pid = pid, .executable = system.at("/usr/bin/player")});
  EXPECT_EQ(pidsOf(system, "player"), (std::vector<Pid>{100, 101}));
  test::writeFile(file, "[Desktop Entry]\nType=Application\nName=Changed\nExec=player\n");
  EXPECT_EQ(pidsOf(system, "player"), (std::vector<Pid>{100, 101}));
}

TEST(RunningApplications, ProcessesOfOtherUsersAreNotListed) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give files to another user";
  FakeSystem system;
  system.program("/usr/bin/player");
  system.entry("player", "Name=Player\nExec=player\n");
  for (const Pid pid : {100, 101}) system.process({.pid = pid, .executable = system.at("/usr/bin/player")});
  ASSERT_EQ(::chown((system.processes().root() / "100").c_str(), 12345, 12345), 0);
  EXPECT_EQ(pidsOf(system, "player"), std::vector<Pid>{101});
}

struct FixedClock : Clock {
  TimePoint now() const override { return {}; }
  Instant steadyNow() const override { return time; }
  Instant time{1h};
};

TEST(RunningApplications, SearchesWithinATenthOfASecondShareOneScan) {
  FakeSystem system;
  system.program("/usr/bin/player");
  system.entry("player", "Name=Player\nExec=player\n");
  system.process({.pid = 100, .executable = system.at("/usr/bin/player")});
  FixedClock clock;
  const LinuxWorkspace workspace(system.applications(), clock, system.raiser, system.launcher);
  const auto count = [&] { return workspace.runningApplications("player").size(); };
  EXPECT_EQ(count(), 1u);
  system.process({.pid = 101, .executable = system.at("/usr/bin/player")});
  EXPECT_EQ(count(), 1u);
  clock.time += 100ms;
  EXPECT_EQ(count(), 2u);
  fs::remove_all(system.processes().root() / "100");
  EXPECT_EQ(count(), 1u) << "a process that has ended is never listed";
}

TEST(RegularApplications, AreListedOldestFirstOneForEachProcess) {
  FakeSystem system;
  for (const char* name : {"player", "editor"}) system.program(std::string("/usr/bin/") + name);
  system.entry("player", "Name=Player\nExec=player\n");
  system.entry("editor", "Name=Editor\nExec=editor\nNoDisplay=true\n");  // an accessory
  system.process({.pid = 100, .executable = system.at("/usr/bin/player"), .startTime = 30});
  system.process({.pid = 101, .executable = system.at("/usr/bin/editor"), .startTime = 20});
  system.process({.pid = 102, .executable = system.at("/usr/bin/player"), .startTime = 10});
  system.process({.pid = 103, .executable = "/usr/bin/nobodys"});
  const std::vector<RunningApplication> expected = {{102, "Player", ActivationPolicy::regular, 10},
                                                    {100, "Player", ActivationPolicy::regular, 30}};
  EXPECT_EQ(system.workspace().regularApplications(), expected);
}

TEST(RegularApplications, OfTheUsersOtherDesktopSessionsAreNotListed) {
  const test::Environment here{{"DISPLAY", ":0"}, {"WAYLAND_DISPLAY", "wayland-0"}};
  FakeSystem system;
  system.program("/usr/bin/player");
  system.entry("player", "Name=Player\nExec=player\n");
  const auto isListedWith = [&](std::vector<std::string> environment, const std::string& flatpakInfo = {},
                                Pid parent = 1) {
    system.process({.pid = 100,
                    .parent = parent,
                    .executable = system.at("/usr/bin/player"),
                    .environment = std::move(environment),
                    .flatpakInfo = flatpakInfo});
    return !system.workspace().regularApplications().empty();
  };
  EXPECT_FALSE(isListedWith({"DISPLAY=:10.0"}));
  EXPECT_FALSE(isListedWith({"DISPLAY=:10", "WAYLAND_DISPLAY=wayland-1"}));
  EXPECT_FALSE(isListedWith({"WAYLAND_DISPLAY=/run/user/1000/wayland-1"}));
  EXPECT_FALSE(isListedWith({"DISPLAY=localhost:0"})) << "a display at the other end of a connection";

  EXPECT_TRUE(isListedWith({"DISPLAY=:0.0"}));
  EXPECT_TRUE(isListedWith({"DISPLAY=:0", "WAYLAND_DISPLAY=wayland-1"}));
  EXPECT_TRUE(isListedWith({"DISPLAY=:10", "WAYLAND_DISPLAY=wayland-0"}));
  EXPECT_TRUE(isListedWith({"DISPLAY=", "WAYLAND_DISPLAY=/run/user/1000/wayland-0"}));
  EXPECT_TRUE(isListedWith({"HOME=/home/me"})) << "a program that says nothing may be in a terminal of this session";
  EXPECT_TRUE(isListedWith({"DISPLAY=:99"}, "[Application]\nname=player\n"))
      << "displays have other names in a container";
  system.process({.pid = 50, .parent = 40, .environment = {"DISPLAY=:10"}});
  system.process({.pid = 40, .environment = {"DISPLAY=:0"}});
  EXPECT_FALSE(isListedWith({"DISPLAY=:10"})) << "its parent is init";
  EXPECT_TRUE(isListedWith({"DISPLAY=:10"}, {}, 50)) << "a display that was started here is a window here";
  EXPECT_FALSE(isListedWith({"DISPLAY=:10"}, {}, 60)) << "whose parent has ended";

  const test::Environment noWayland{{"WAYLAND_DISPLAY", nullptr}};
  EXPECT_TRUE(isListedWith({"DISPLAY=:0", "WAYLAND_DISPLAY=wayland-1"}));
  EXPECT_FALSE(isListedWith({"DISPLAY=:10", "WAYLAND_DISPLAY=wayland-0"}));
  EXPECT_FALSE(isListedWith({"WAYLAND_DISPLAY=wayland-0"})) << "this session has no compositor";

  const test::Environment noDisplay{{"DISPLAY", nullptr}};
  EXPECT_TRUE(isListedWith({"DISPLAY=:0"})) << "of this session nothing is known";
}

std::optional<bool> activate(FakeSystem& system, Pid pid) {
  std::optional<bool> answer;
  system.workspace().activate({pid, std::nullopt, ActivationPolicy::regular}, "",
                              [&](bool forward) { answer = forward; });
  return answer;
}

TEST(Activation, NamesTheApplicationsOtherProcesses) {
  FakeSystem system;
  system.program("/usr/bin/player");
  system.entry("player", "Name=Player\nExec=player\n");
  for (const Pid pid : {100, 101, 102}) system.process({.pid = pid, .executable = system.at("/usr/bin/player")});
  EXPECT_EQ(activate(system, 101), true);
  const ActivationTarget& target = system.raiser.asked.at(0);
  EXPECT_EQ(target.pid, 101);
  EXPECT_EQ(target.others, (std::vector<Pid>{100, 102}));
  EXPECT_EQ(target.entry->id, "player");
}

TEST(Activation, NamesTheApplicationsProcessesThatStartedTheProcess) {
  FakeSystem system;
  system.program("/usr/bin/player");
  system.entry("player", "Name=Player\nExec=player\n");
  for (const auto& [pid, parent] : {std::pair(100, 1), {101, 100}, {102, 101}, {200, 1}})
    system.process({.pid = pid, .parent = parent, .executable = system.at("/usr/bin/player")});
  activate(system, 102);
  EXPECT_EQ(system.raiser.asked.at(0).starters, (std::vector<Pid>{101, 100}));
}

TEST(Activation, OnlyATerminalStandsInForTheProgramsInside) {
  FakeSystem system;
  for (const char* name : {"player", "terminal", "files"}) system.program(std::string("/usr/bin/") + name);
  system.entry("player", "Name=Player\nExec=player\n");
  system.entry("terminal", "Name=Terminal\nExec=terminal\nCategories=TerminalEmulator;\n");
  system.entry("files", "Name=Files\nExec=files\nCategories=FileManager;\n");
  system.process({.pid = 50, .executable = system.at("/usr/bin/terminal")});
  system.process({.pid = 51, .parent = 50, .executable = "/usr/bin/bash"});
  system.process({.pid = 100, .parent = 51, .executable = system.at("/usr/bin/player")});
  system.process({.pid = 60, .executable = system.at("/usr/bin/files")});
  system.process({.pid = 101, .parent = 60, .executable = system.at("/usr/bin/player")});
  activate(system, 100);
  activate(system, 101);
  EXPECT_EQ(system.raiser.asked.at(0).hosts, std::vector<Pid>{50});
  EXPECT_EQ(system.raiser.asked.at(1).hosts, std::vector<Pid>{});
}

TEST(Activation, IsFalseOnlyIfThereIsCertainlyNoWindow) {
  FakeSystem system;
  system.program("/usr/bin/player");
  system.entry("player", "Name=Player\nExec=player\n");
  system.process({.pid = 100, .executable = system.at("/usr/bin/player")});
  system.raiser.answer = Raised::unknown;
  EXPECT_EQ(activate(system, 100), true);
  system.raiser.answer = Raised::noWindow;
  EXPECT_EQ(activate(system, 100), false);
}

TEST(Activation, OfAProcessThatIsGoneIsFalseAndTheRaiserIsNotAsked) {
  FakeSystem system;
  EXPECT_EQ(activate(system, 100), false);
  EXPECT_TRUE(system.raiser.asked.empty());
}

TEST(Opening, EntriesAreLaunchedAndFilesOpened) {
  FakeSystem system;
  system.workspace().open("/usr/share/applications/player.desktop", [](bool) {});
  system.workspace().open("/home/me/history.txt", [](bool) {});
  system.workspace().open("relative.txt", [&](bool started) { EXPECT_FALSE(started); });
  ASSERT_EQ(system.launcher.launched.size(), 1u);
  EXPECT_EQ(system.launcher.launched[0].first, "/usr/share/applications/player.desktop");
  EXPECT_EQ(system.launcher.opened, std::vector<std::string>{"/home/me/history.txt"});
}

TEST(Opening, OnlyPagesOfTheWebAreOpenedByTheirAddress) {
  FakeSystem system;
  for (const char* url : {"https://example.org/", "HTTP://example.org/"}) system.workspace().openURL(url);
  for (const char* url : {"file:///etc/passwd", "javascript:x", "--help", "", "https:", "player:x", " https://x"})
    system.workspace().openURL(url);
  EXPECT_EQ(system.launcher.opened, (std::vector<std::string>{"https://example.org/", "HTTP://example.org/"}));
}

TEST(Opening, APageIsHandedToTheApplicationAndItsFailureToTheCaller) {
  FakeSystem system;
  std::vector<bool> answers;
  const auto done = [&](bool started) { answers.push_back(started); };
  system.workspace().openURL("https://example.org/", "/usr/share/applications/browser.desktop", done);
  system.launcher.answer = false;
  system.workspace().openURL("https://example.org/", "/usr/share/applications/browser.desktop", done);
  system.workspace().openURL("file:///etc/passwd", "/usr/share/applications/browser.desktop", done);
  EXPECT_EQ(answers, (std::vector<bool>{true, false, false}));
  EXPECT_EQ(system.launcher.launched.size(), 2u);
}

}  // namespace
}  // namespace tollvane
