// The settings window on a real screen, used with a real mouse and real keys.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/private_desktop.h"
#include "tests/support/process.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

using testing::HasSubstr;

class SettingsWindowTest : public SharedSession<PrivateDesktop> {
 protected:
  explicit SettingsWindowTest(const char* size = "1366x768")
      : SharedSession(PrivateDesktop::Options{.panel = false, .size = size}) {
    // A new window may get the number of a closed one, which still counts as the active window for a moment.
    spoilSession();
  }

  void start(const std::string& scenario, const std::string& title = "Tollvane Settings") {
    probe = desktop.start({TOLLVANE_PROBES "/settings_probe", scenario});
    order("show");
    awaitInFront(title + "\n");
  }

  // Sends one command to the probe and returns the lines that it prints before "obeyed".
  std::vector<std::string> order(const std::string& line) {
    probe->writeLine(line);
    std::vector<std::string> answers;
    while (const auto answer = probe->line(desktopPatience)) {
      if (*answer == "obeyed") return answers;
      if (*answer != "painted") answers.push_back(*answer);  // that comes at any time
    }
    ADD_FAILURE() << "no answer to " << line;
    return answers;
  }

  std::string run(const std::vector<std::string>& command) { return desktop.run(command).value_or(""); }
  std::string inFront() { return run({"xdotool", "getactivewindow", "getwindowname"}); }
  void awaitInFront(const std::string& title) {
    ASSERT_TRUE(waitUntil([&] { return inFront() == title; }, desktopPatience)) << inFront();
  }
  bool becomes(const std::string& line) {
    const auto holds = [&] {
      const auto state = order("state");
      return std::find(state.begin(), state.end(), line) != state.end();
    };
    return waitUntil(holds, desktopPatience);
  }
  void click(const std::string& name) {
    const auto answers = order("where " + name);
    ASSERT_EQ(answers.size(), 1u) << name;
    std::istringstream place(answers[0].substr(6));
    std::string x, y;
    place >> x >> y;
    run({"xdotool", "mousemove", x, y, "click", "1"});
  }
  void press(const std::string& key) { run({"xdotool", "key", key}); }

  PrivateDesktop& desktop = session;
  std::unique_ptr<Process> probe;
};

TEST_F(SettingsWindowTest, TheMouseTurnsASwitch) {
  start("partly");
  ASSERT_TRUE(becomes("off Start Tollvane when you log in"));
  click("Start Tollvane when you log in");
  EXPECT_TRUE(becomes("on Start Tollvane when you log in"));
}

TEST_F(SettingsWindowTest, TheMouseTurnsACheckBox) {
  start("none");
  click("Google Chrome");
  EXPECT_TRUE(becomes("on Google Chrome"));
}

TEST_F(SettingsWindowTest, TheKeyboardTurnsTheFirstSwitchAndTheNext) {
  start("partly");
  for (const char* key : {"Tab", "space", "Tab", "space"}) press(key);
  EXPECT_TRUE(becomes("on Start Tollvane when you log in"));
  EXPECT_TRUE(becomes("on Mark browser tabs that made a sound"));
}

TEST_F(SettingsWindowTest, ComesInFrontOfOthersAgainAndAgain) {
  start("partly");
  const auto other = desktop.start({"xmessage", "ding"});
  awaitInFront("xmessage\n");
  order("show");
  awaitInFront("Tollvane Settings\n");
}

TEST_F(SettingsWindowTest, ClosingOnlyHidesIt) {
  start("partly");
  for (const std::vector<std::string>& close : std::vector<std::vector<std::string>>{
           {"xdotool", "key", "Escape"}, {"xdotool", "key", "ctrl+w"}, {"wmctrl", "-c", ":ACTIVE:"}}) {
    run(close);
    EXPECT_TRUE(becomes("window hidden")) << close.back();
    order("show");
    awaitInFront("Tollvane Settings\n");
  }
}

class SmallScreenTest : public SettingsWindowTest {
 protected:
  SmallScreenTest() : SettingsWindowTest("1024x600") {}
};

TEST_F(SmallScreenTest, TheWindowIsNotHigherThanTheScreenHasRoom) {
  start("welcome", "Welcome");
  std::istringstream frame(order("frame").at(0));
  std::string word;
  int x = 0, y = 0, width = 0, height = 0;
  ASSERT_TRUE(frame >> word >> x >> y >> width >> height);
  EXPECT_GE(y, 0);
  EXPECT_GT(height, 500);
  EXPECT_LE(y + height, 600);
}

TEST_F(SettingsWindowTest, IsTollvanesWindowOfOneSize) {
  start("partly");
  const std::string id = run({"xdotool", "getactivewindow"});
  const std::string hints = run({"xprop", "-id", id.substr(0, id.find('\n')), "WM_CLASS", "WM_NORMAL_HINTS",
                                 "_NET_WM_ICON_NAME", "_MOTIF_WM_HINTS"});
  EXPECT_THAT(hints, HasSubstr("minimum size: 520 by 640"));
  EXPECT_THAT(hints, HasSubstr("maximum size: 520 by 640"));
  // Functions: move and close; decorations: border, title and menu.
  EXPECT_THAT(hints, HasSubstr("_MOTIF_WM_HINTS"));
}

}  // namespace
}  // namespace tollvane::test
