// Going to the window of the application that made a sound, with real programs and a real window manager.

#include <gmock/gmock.h>

#include "tests/desktop/desktop_fixture.h"

namespace tollvane::test {
namespace {

using testing::HasSubstr;

class SourceWindowTest : public DesktopTest {
 protected:
  SourceWindowTest() {
    entry("clock", "Name=Wall Clock\nExec=xmessage\n");
    entry("calculator", "Name=Pocket Calculator\nExec=xcalc\nStartupWMClass=XCalc\n");
  }

  std::unique_ptr<Process> open(const std::vector<std::string>& command, const std::string& name) {
    auto program = desktop.start(command);
    EXPECT_TRUE(waitUntil([&] { return windows(name) != before_[name]; }, desktopPatience)) << name;
    before_[name] = windows(name);
    EXPECT_TRUE(waitUntil([&] { return inFront() == name; }, desktopPatience)) << name;
    return program;
  }

  std::string windows(const std::string& name) {
    return desktop.run({"xdotool", "search", "--name", "^" + name + "$"}).value_or("");
  }
  std::string inFront() {
    auto name = desktop.run({"xdotool", "getactivewindow", "getwindowname"}).value_or("");
    if (!name.empty()) name.pop_back();
    return name;
  }
  std::string activate(const Process& program) { return ask("activate " + std::to_string(program.pid())); }

 private:
  std::map<std::string, std::string> before_;
};

TEST_F(SourceWindowTest, ComesInFrontOfTheOthers) {
  const auto clock = open({"xmessage", "ding"}, "xmessage");
  const auto calculator = open({"xcalc"}, "Calculator");
  startProbe();
  EXPECT_EQ(activate(*clock), "activated yes");
  EXPECT_EQ(inFront(), "xmessage");
  EXPECT_EQ(activate(*calculator), "activated yes");
  EXPECT_EQ(inFront(), "Calculator");
  EXPECT_EQ(activate(*calculator), "activated yes") << "it is in front already";
}

TEST_F(SourceWindowTest, IsShownAgainWhenItWasMinimised) {
  const auto clock = open({"xmessage", "ding"}, "xmessage");
  const auto calculator = open({"xcalc"}, "Calculator");
  desktop.run({"xdotool", "search", "--name", "^xmessage$", "windowminimize"});
  startProbe();
  EXPECT_EQ(activate(*clock), "activated yes");
  EXPECT_EQ(inFront(), "xmessage");
}

TEST_F(SourceWindowTest, ComesForwardFromAnotherWorkspace) {
  const auto clock = open({"xmessage", "ding"}, "xmessage");
  const auto calculator = open({"xcalc"}, "Calculator");
  std::string window = windows("xmessage");
  window.pop_back();
  ASSERT_TRUE(desktop.run({"xdotool", "set_desktop_for_window", window, "1"}));
  // The change is done when the window manager says so.
  ASSERT_TRUE(waitUntil(
      [&] {
        return desktop.run({"xdotool", "get_desktop_for_window", window}) == "1\n";
      },
      desktopPatience));
  ASSERT_EQ(desktop.run({"xdotool", "get_desktop"}), "0\n");
  startProbe();
  EXPECT_EQ(activate(*clock), "activated yes");
  EXPECT_EQ(inFront(), "xmessage");
  EXPECT_EQ(desktop.run({"xdotool", "get_desktop"}), "1\n");
}

TEST_F(SourceWindowTest, IsTheApplicationsWindowThatWasInFrontLast) {
  const auto clock = open({"xmessage", "-title", "first", "hello"}, "first");
  const auto other = open({"xcalc"}, "Calculator");
  const std::string own = windows("first");
  ASSERT_FALSE(own.empty());
  startProbe();
  EXPECT_EQ(activate(*clock), "activated yes");
  EXPECT_EQ(inFront(), "first");
}

TEST_F(SourceWindowTest, IsFoundByItsClassWhenItNamesNoProcess) {
  const auto calculator = open({"xcalc"}, "Calculator");
  const auto clock = open({"xmessage", "ding"}, "xmessage");
  std::string window = windows("Calculator");
  window.pop_back();
  ASSERT_TRUE(desktop.run({"xprop", "-id", window, "-remove", "_NET_WM_PID"}));
  startProbe();
  EXPECT_EQ(activate(*calculator), "activated yes");
  EXPECT_EQ(inFront(), "Calculator");
}

TEST_F(SourceWindowTest, ForAProgramInATerminalIsTheTerminalsWindow) {
  // The terminal emulator is a copy of a shell. It runs one program with a window and one without.
  std::filesystem::copy_file("/bin/dash", root() / "terminal");
  std::filesystem::copy_file("/bin/sleep", root() / "humming");
  entry("terminal", "Name=Terminal\nExec=" + (root() / "terminal").string() +
                        "\nCategories=TerminalEmulator;\nStartupWMClass=TerminalWindow\n");
  entry("humming", "Name=Humming\nExec=" + (root() / "humming").string() + "\n");
  const auto terminal =
      desktop.start({(root() / "terminal").string(), "-c",
                     "xmessage -title terminal ding & " + (root() / "humming").string() + " 1000 & echo $!; wait"});
  const auto humming = terminal->line(desktopPatience);
  ASSERT_TRUE(humming);
  ASSERT_TRUE(waitUntil([&] { return inFront() == "terminal"; }, desktopPatience)) << inFront();
  // Make the window name the terminal as its process, as a terminal's window does.
  std::string window = windows("terminal");
  window.pop_back();
  ASSERT_TRUE(desktop.run(
      {"xprop", "-id", window, "-f", "_NET_WM_PID", "32c", "-set", "_NET_WM_PID", std::to_string(terminal->pid())}));
  const auto calculator = open({"xcalc"}, "Calculator");
  startProbe();
  EXPECT_EQ(ask("activate " + *humming), "activated yes");
  EXPECT_EQ(inFront(), "terminal");
}

TEST_F(SourceWindowTest, IsNotReportedAsShownIfTheApplicationHasNoWindow) {
  std::filesystem::copy_file("/bin/sleep", root() / "humming");
  entry("humming", "Name=Humming\nExec=" + (root() / "humming").string() + "\n");
  const auto humming = desktop.start({(root() / "humming").string(), "1000"});
  const auto clock = open({"xmessage", "ding"}, "xmessage");
  startProbe();
  EXPECT_EQ(activate(*humming), "activated no");
  EXPECT_EQ(inFront(), "xmessage");
}

TEST_F(SourceWindowTest, IsNotReportedAsShownIfTheApplicationHasEnded) {
  const auto clock = open({"xmessage", "ding"}, "xmessage");
  startProbe();
  clock->stop();
  EXPECT_EQ(activate(*clock), "activated no");
}

TEST_F(SourceWindowTest, OfAFrozenApplicationComesForwardToo) {
  const auto clock = open({"xmessage", "ding"}, "xmessage");
  const auto calculator = open({"xcalc"}, "Calculator");
  clock->signal(SIGSTOP);
  startProbe();
  EXPECT_EQ(activate(*clock), "activated yes");
  EXPECT_EQ(inFront(), "xmessage");
  clock->signal(SIGCONT);
}

TEST_F(SourceWindowTest, RunningApplicationsAreListedOldestFirst) {
  const auto clock = open({"xmessage", "ding"}, "xmessage");
  const auto calculator = open({"xcalc"}, "Calculator");
  startProbe();
  probe->writeLine("running");
  std::vector<std::string> lines;
  while (true) {
    const auto line = probe->line(desktopPatience);
    ASSERT_TRUE(line);
    if (*line == "end") break;
    lines.push_back(*line);
  }
  const auto place = [&](const Process& program, const std::string& name) {
    return std::find(lines.begin(), lines.end(), std::to_string(program.pid()) + "\t" + name) - lines.begin();
  };
  EXPECT_LT(place(*clock, "Wall Clock"), place(*calculator, "Pocket Calculator"));
  EXPECT_LT(place(*calculator, "Pocket Calculator"), static_cast<std::ptrdiff_t>(lines.size()));
}

TEST_F(SourceWindowTest, TheWindowWithTheWantedTitleComesForward) {
  const auto one = open({"xcalc", "-title", "One"}, "One");
  const auto two = open({"xcalc", "-title", "Two"}, "Two");
  const std::string activateOne = "activate " + std::to_string(one->pid());
  startProbe();
  EXPECT_EQ(ask(activateOne + " On"), "activated yes");
  EXPECT_EQ(inFront(), "One");
  EXPECT_EQ(ask(activateOne + " Two"), "activated yes");
  EXPECT_EQ(inFront(), "Two");
  desktop.run({"xdotool", "search", "--name", "^One$", "windowraise"});  // above the other, but without the focus
  EXPECT_EQ(ask(activateOne + " Three"), "activated yes");
  EXPECT_EQ(inFront(), "Two") << "which is in front already";
}

}  // namespace
}  // namespace tollvane::test
