// The bundle in a real panel: after a sound the user clicks the bell, and the window that made it comes forward.

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

#include "support/ascii.h"
#include "tests/desktop/desktop_fixture.h"
#include "tests/desktop/running_processes.h"
#include "tests/virtual/log_lines.h"

namespace tollvane::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class WholeDesktopTest : public DesktopTest {
 protected:
  explicit WholeDesktopTest(PrivateDesktop::Options options = {.tone = PrivateDesktop::Tone::dark})
      : DesktopTest(options) {
    fs::copy(TOLLVANE_BUNDLE, bundle, fs::copy_options::recursive);
    fs::remove(bundle / "TollvaneLog");
    // The log tool is replaced by a program that prints the lines that the test writes here.
    run({"mkfifo", sounds.string()});
    script("bundle/TollvaneLog", "exec cat <>'" + sounds.string() + "'\n");
    entry("clock", "Name=Wall Clock\nExec=xmessage -title xmessage ding\n");
    entry("calculator", "Name=Pocket Calculator\nExec=xcalc\n");
  }

  // Starts Tollvane as after its first launch.
  void start() {
    write(".config/Tollvane/defaults.json", R"({"hasLaunchedBefore":true})");
    launch();
  }
  void launch() { tollvane = startTollvane(); }
  std::unique_ptr<Process> startTollvane() { return desktop.start({(bundle / "Tollvane").string()}); }

  std::string run(const std::vector<std::string>& command) { return desktop.run(command).value_or(""); }
  static bool eventually(const std::function<bool()>& condition) { return waitUntil(condition, desktopPatience); }

  // --- programs with windows

  std::unique_ptr<Process> open(const std::vector<std::string>& command, const std::string& title) {
    auto program = desktop.start(command);
    EXPECT_TRUE(eventually([&] { return inFront() == title; })) << title;
    return program;
  }
  std::string inFront() { return firstLine(run({"xdotool", "getactivewindow", "getwindowname"})); }
  std::string windowNamed(const std::string& title) {
    return firstLine(run({"xdotool", "search", "--onlyvisible", "--name", "^" + title + "$"}));
  }
  static std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

  // --- sounds and the bell

  void sound(const std::string& name, const Process& maker) {
    std::ofstream(sounds) << outputStarted(name, maker.pid()) << std::flush;
  }

  // A property of the status item; empty unless there is exactly one item.
  std::string itemProperty(const std::string& name) {
    const std::string items = desktop.registeredItems();
    if (!items.starts_with("as 1 \"")) return "";
    const std::string item = items.substr(6, items.find('"', 6) - 6);
    const std::size_t slash = item.find('/');
    return run({"busctl", "--user", "get-property", item.substr(0, slash), item.substr(slash),
                "org.kde.StatusNotifierItem", name});
  }
  bool bellIs(const std::string& icon) { return itemProperty("IconName") == "s \"tollvane-" + icon + "-symbolic\"\n"; }
  void awaitSound(const std::string& name) {
    ASSERT_TRUE(eventually([&] { return itemProperty("ToolTip").find(name) != std::string::npos; })) << name;
  }
  void awaitBell() {
    ASSERT_TRUE(eventually([&] { return bellIs("bell"); }));
    // A panel draws an icon a moment after it has accepted the registration.
    ASSERT_TRUE(eventually([&] { return desktop.showsIcon(); }));
  }
  // --- pointer and keys

  void clickAt(int x, int y) { desktop.clickAt(x, y); }
  void key(const std::string& name) { run({"xdotool", "key", name}); }

  struct Place {
    int x = 0, y = 0, width = 0, height = 0;
  };
  std::optional<Place> menu() {
    const std::string own = std::to_string(tollvane->pid());
    std::istringstream windows(run({"xdotool", "search", "--onlyvisible", "--pid", own}));
    for (std::string window; std::getline(windows, window);) {
      // A menu is a window that the window manager does not manage.
      if (run({"xwininfo", "-id", window}).find("Override Redirect State: yes") == std::string::npos) continue;
      Place place;
      std::istringstream lines(run({"xdotool", "getwindowgeometry", "--shell", window}));
      for (std::string line; std::getline(lines, line);) {
        const std::string name = line.substr(0, line.find('='));
        const int value = ascii::number<int>(line.substr(line.find('=') + 1)).value_or(0);
        if (name == "X") place.x = value;
        if (name == "Y") place.y = value;
        if (name == "WIDTH") place.width = value;
        if (name == "HEIGHT") place.height = value;
      }
      return place;
    }
    return std::nullopt;
  }
  void openMenu() {
    clickAt(786, 14);
    ASSERT_TRUE(eventually([&] { return menu().has_value(); }));
  }

  // Clicks on sound `number` of `among` sounds. The newest is number 1, right below the header. All rows of one line
  // are equally high.
  void clickSound(int number, int among) {
    constexpr int margin = 4, separator = 8, separators = 2, otherRows = 8;
    const Place place = menu().value();
    const double row = (place.height - 2 * margin - separators * separator) / double(among + otherRows);
    clickAt(place.x + 60, place.y + margin + static_cast<int>((number + 0.5) * row));
  }

  void startAndHear(Process& clock) {
    start();
    awaitBell();
    sound("xmessage", clock);
    awaitSound("Wall Clock");
  }

  // --- alerts

  bool showsAlert() { return !windowNamed("Tollvane").empty() && inFront() == "Tollvane"; }

  const fs::path bundle = root() / "bundle";
  const fs::path sounds = root() / "sounds";
  const fs::path socket = root() / ".local/share/Tollvane/bridge.sock";
  std::unique_ptr<Process> tollvane;
};

TEST_F(WholeDesktopTest, AClickOnASoundBringsItsWindowForwardAndEmptiesTheBell) {
  const auto clock = open({"xmessage", "-title", "xmessage", "ding"}, "xmessage");
  const auto calculator = open({"xcalc"}, "Calculator");
  startAndHear(*clock);
  ASSERT_TRUE(bellIs("bell-fill"));
  openMenu();
  clickSound(1, 1);
  EXPECT_TRUE(eventually([&] { return inFront() == "xmessage"; })) << inFront();
  EXPECT_TRUE(eventually([&] { return bellIs("bell"); }));
  EXPECT_FALSE(menu());
}

TEST_F(WholeDesktopTest, KeysChooseTheOlderOfTwoSoundsAndTheOtherStaysUnseen) {
  const auto clock = open({"xmessage", "-title", "xmessage", "ding"}, "xmessage");
  const auto calculator = open({"xcalc"}, "Calculator");
  startAndHear(*clock);
  sound("xcalc", *calculator);
  awaitSound("Pocket Calculator");
  openMenu();
  key("Down");
  key("Down");
  key("Return");
  EXPECT_TRUE(eventually([&] { return inFront() == "xmessage"; })) << inFront();
  EXPECT_TRUE(bellIs("bell-fill"));
}

TEST_F(WholeDesktopTest, AnApplicationThatWasQuitIsOfferedAndOpened) {
  auto clock = open({"xmessage", "-title", "xmessage", "ding"}, "xmessage");
  startAndHear(*clock);
  clock->stop();
  ASSERT_TRUE(eventually([&] { return windowNamed("xmessage").empty(); }));
  openMenu();
  clickSound(1, 1);
  ASSERT_TRUE(eventually([&] { return showsAlert(); })) << "Wall Clock is closed";
  // Return chooses "Open Wall Clock", the first button. A key may be lost until the alert has the keyboard.
  ASSERT_TRUE(eventually([&] {
    key("Return");
    return waitUntil([&] { return windowNamed("Tollvane").empty(); }, std::chrono::milliseconds(500));
  }));
  EXPECT_TRUE(eventually([&] { return !windowNamed("xmessage").empty(); }));
}

TEST_F(WholeDesktopTest, AnAlertSaysThatAProgramHasNoWindow) {
  fs::copy_file("/bin/sleep", root() / "humming");
  const auto humming = desktop.start({(root() / "humming").string(), "1000"});
  start();
  awaitBell();
  sound("humming", *humming);
  awaitSound("humming");
  openMenu();
  clickSound(1, 1);
  ASSERT_TRUE(eventually([&] { return showsAlert(); }));
  key("Escape");
  EXPECT_TRUE(eventually([&] { return windowNamed("Tollvane").empty(); }));
  EXPECT_TRUE(tollvane->running());
}

TEST_F(WholeDesktopTest, QuitAndTheSignalToEndLeaveNothingBehind) {
  const std::vector<std::function<void()>> ways{
      [&] {
        openMenu();
        key("ctrl+q");
      },
      [&] { tollvane->signal(SIGTERM); },
      [&] { tollvane->signal(SIGINT); },
  };
  for (const auto& end : ways) {
    start();
    awaitBell();
    ASSERT_TRUE(eventually([&] { return !childrenOf(tollvane->pid()).empty() && fs::exists(socket); }));
    const auto children = childrenOf(tollvane->pid());
    end();
    EXPECT_EQ(tollvane->exitCode(desktopPatience), 0);
    EXPECT_FALSE(fs::exists(socket));
    for (const Pid child : children) EXPECT_TRUE(eventually([&] { return !isAlive(child); }));
    EXPECT_TRUE(eventually([&] { return desktop.registeredItems().empty(); }));
    EXPECT_TRUE(eventually([&] { return !desktop.showsIcon(); }));
  }
}

class EndOfSessionTest : public WholeDesktopTest {
 protected:
  void endWith(const std::function<void()>& lose) {
    start();
    awaitBell();
    ASSERT_TRUE(eventually([&] { return !childrenOf(tollvane->pid()).empty() && fs::exists(socket); }));
    const auto children = childrenOf(tollvane->pid());
    lose();
    EXPECT_TRUE(tollvane->exitCode(desktopPatience));
    EXPECT_FALSE(fs::exists(socket));
    for (const Pid child : children) EXPECT_TRUE(eventually([&] { return !isAlive(child); }));
  }
};

TEST_F(EndOfSessionTest, NothingIsLeftWhenTheScreenIsGone) {
  endWith([&] { desktop.killScreen(); });
}

TEST_F(EndOfSessionTest, NothingIsLeftWhenTheBusIsGone) {
  endWith([&] { desktop.killBus(); });
}

TEST_F(WholeDesktopTest, ASecondStartOpensTheSettingsOfTheFirstAndEnds) {
  start();
  awaitBell();
  EXPECT_EQ(windowNamed("Tollvane Settings"), "");
  EXPECT_EQ(startTollvane()->exitCode(desktopPatience), 0);
  EXPECT_TRUE(eventually([&] { return inFront() == "Tollvane Settings"; })) << inFront();
  EXPECT_TRUE(bellIs("bell")) << "there is one bell";
  EXPECT_TRUE(tollvane->running());
}

TEST_F(WholeDesktopTest, TheFirstLaunchWelcomesAndStartsWithTheSessionFromThenOn) {
  const fs::path autostart = root() / ".config/autostart/tollvane.desktop";
  launch();
  awaitBell();
  EXPECT_TRUE(eventually([&] { return inFront() == "Welcome"; })) << inFront();
  EXPECT_TRUE(fs::exists(autostart));
  tollvane->stop();
  fs::remove(autostart);

  launch();
  awaitBell();
  sound("xcalc", *tollvane);  // when it has heard something, it has started completely
  ASSERT_TRUE(eventually([&] { return bellIs("bell-fill"); }));
  EXPECT_EQ(windowNamed("Welcome"), "");
  EXPECT_FALSE(fs::exists(autostart)) << "the user has removed it";
}

TEST_F(WholeDesktopTest, TheDoctorSeesTheOneThatRunsItsBellAndThatItsProgramWasReplaced) {
  start();
  awaitBell();
  const auto doctor = [&] { return run({"sh", "-c", "'" + (bundle / "Tollvane").string() + "' --doctor; true"}); };
  const std::string text = doctor();
  EXPECT_THAT(text, HasSubstr("  ok    Tollvane 0."));
  EXPECT_THAT(text, HasSubstr("  ok    Status icons are shown by xfce4-panel."));
  EXPECT_THAT(text, HasSubstr("  ok    Windows come forward through the X11 window manager."));

  fs::copy(bundle / "Tollvane", bundle / "newer");
  fs::rename(bundle / "newer", bundle / "Tollvane");
  EXPECT_THAT(doctor(), HasSubstr("its program has been replaced or removed since it was started"));
  EXPECT_TRUE(tollvane->running());
}

TEST_F(WholeDesktopTest, AtRestItHoldsFarLessThanAtItsStart) {
  start();
  const auto kibibytes = [&](const std::string& name) {
    std::ifstream status("/proc/" + std::to_string(tollvane->pid()) + "/status");
    for (std::string word; status >> word;)
      if (word == name && status >> word) return std::stol(word);
    return 0L;
  };
  EXPECT_TRUE(eventually([&] { return kibibytes("VmHWM:") > 0 && kibibytes("VmRSS:") < kibibytes("VmHWM:") / 2; }));
}

TEST_F(WholeDesktopTest, UninstallEndsTheOneThatRuns) {
  const fs::path autostart = root() / ".config/autostart/tollvane.desktop";
  launch();
  awaitBell();
  ASSERT_TRUE(fs::exists(autostart));
  EXPECT_THAT(run({(bundle / "Tollvane").string(), "--uninstall"}), HasSubstr("History and settings are still there."));
  EXPECT_EQ(tollvane->exitCode(desktopPatience), 0);
  EXPECT_FALSE(fs::exists(autostart));
  EXPECT_TRUE(fs::exists(root() / ".config/Tollvane/defaults.json"));
}

class WithoutPanelTest : public WholeDesktopTest {
 protected:
  WithoutPanelTest() : WholeDesktopTest({.screen = true, .panel = false}) {}
  void TearDown() override {
    if (desktop.hasPanel()) desktop.stopPanel();
  }
};

TEST_F(WithoutPanelTest, ItSaysSoAndAPanelThatComesLaterGetsOneBell) {
  start();
  ASSERT_TRUE(eventually([&] { return showsAlert(); }));
  key("Escape");
  ASSERT_TRUE(eventually([&] { return windowNamed("Tollvane").empty(); }));
  desktop.startPanel();
  ASSERT_TRUE(eventually([&] { return bellIs("bell"); })) << desktop.registeredItems();
  ASSERT_TRUE(eventually([&] { return desktop.showsIcon(); }));
  openMenu();
}

TEST_F(WithoutPanelTest, AnOldTrayGetsTheBellAndTheBellOpensTheMenu) {
  const auto tray = desktop.start({"trayer", "--edge", "top", "--align", "right", "--widthtype", "request"});
  start();
  std::string icon;
  ASSERT_TRUE(eventually([&] {
    icon = firstLine(run({"xdotool", "search", "--onlyvisible", "--pid", std::to_string(tollvane->pid())}));
    return !icon.empty();
  }));
  EXPECT_EQ(desktop.registeredItems(), "") << "there must not be two bells";
  ASSERT_TRUE(eventually([&] {
    run({"xdotool", "mousemove", "--window", icon, "8", "8", "click", "1"});
    return waitUntil([&] { return menu().has_value(); }, std::chrono::milliseconds(2000));
  }));
}

}  // namespace
}  // namespace tollvane::test
