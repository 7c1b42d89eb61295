// Alerts on a real screen, answered by real keys.

#include <gmock/gmock.h>

#include "tests/desktop/desktop_fixture.h"

namespace tollvane::test {
namespace {

class AlertsTest : public DesktopTest {
 protected:
  void awaitAlert() {
    ASSERT_TRUE(waitUntil([&] { return inFront() == "Tollvane\n"; }, desktopPatience)) << inFront();
  }
  std::string inFront() { return desktop.run({"xdotool", "getactivewindow", "getwindowname"}).value_or(""); }
  void press(const std::string& key) { desktop.run({"xdotool", "key", key}); }
  std::string nextLine() { return probe->line(desktopPatience).value_or("(nothing)"); }
};

TEST_F(AlertsTest, ComeInFrontAndReturnChoosesTheFirstButton) {
  const auto clock = desktop.start({"xmessage", "ding"});
  ASSERT_TRUE(waitUntil([&] { return inFront() == "xmessage\n"; }, desktopPatience));
  startProbe();
  probe->writeLine("alert Mail is closed|Mail made this sound but isn't open anymore.|Open Mail|OK");
  awaitAlert();
  press("Return");
  EXPECT_EQ(nextLine(), "answered 0");
}

TEST_F(AlertsTest, EscapeChoosesTheLastButton) {
  startProbe();
  probe->writeLine("alert Mail is closed|Mail made this sound.|Open Mail|OK");
  awaitAlert();
  press("Escape");
  EXPECT_EQ(nextLine(), "answered 1");
}

TEST_F(AlertsTest, ClosingTheWindowChoosesTheLastButton) {
  startProbe();
  probe->writeLine("alert Mail is closed|Mail made this sound.|Open Mail|OK");
  awaitAlert();
  desktop.run({"wmctrl", "-c", ":ACTIVE:"});
  EXPECT_EQ(nextLine(), "answered 1");
}

TEST_F(AlertsTest, WaitForEachOther) {
  startProbe();
  probe->writeLine("alert First|one|A|B");
  probe->writeLine("alert Second|two|A");
  awaitAlert();
  EXPECT_EQ(ask("ask"), "ok") << "the program runs on meanwhile";
  press("Escape");
  EXPECT_EQ(nextLine(), "answered 1");
  awaitAlert();
  press("Escape");
  EXPECT_EQ(nextLine(), "answered 0");
}

TEST_F(AlertsTest, WithEndlessNamesStayOnTheScreen) {
  startProbe();
  const std::string name(10000, 'x');
  probe->writeLine("alert " + name + " is closed|" + name + " made this sound but isn't open anymore.|Open " + name +
                   "|OK");
  awaitAlert();
  const std::string geometry = desktop.run({"xdotool", "getactivewindow", "getwindowgeometry", "--shell"}).value_or("");
  const auto number = [&](const std::string& key) {
    const auto at = geometry.find(key + "=");
    return at == std::string::npos ? -1 : std::stoi(geometry.substr(at + key.size() + 1));
  };
  EXPECT_GE(number("X"), 0) << geometry;
  EXPECT_GE(number("Y"), 0) << geometry;
  EXPECT_LE(number("X") + number("WIDTH"), 800) << geometry;
  EXPECT_LE(number("Y") + number("HEIGHT"), 480) << geometry;
}

}  // namespace
}  // namespace tollvane::test
