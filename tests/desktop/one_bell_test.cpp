// Tollvane as one of a desktop's programs: there is one bell however often it is started, the bell is shown where the
// desktop can show it, and it ends with the session.

#include <gmock/gmock.h>

#include <thread>

#include "tests/desktop/desktop_fixture.h"
#include "tests/desktop/running_processes.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

class OneBellTest : public DesktopTest {
 protected:
  OneBellTest() {
    EXPECT_TRUE(waitUntil([&] { return owner().empty(); }, desktopPatience))
        << "the Tollvane of the test before is still there";
  }
  void TearDown() override {
    if (desktop.hasPanel()) desktop.stopPanel();
  }

  std::unique_ptr<Process> startTollvane(const Variables& extra = {}) {
    return desktop.start({TOLLVANE_BUNDLE "/Tollvane"}, extra);
  }

  std::string owner() {
    return desktop
        .run({"busctl", "--user", "call", "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
              "GetConnectionUnixProcessID", "s", "com.quarnel.tollvane"})
        .value_or("");
  }
  void awaitOwner(const Process& program) {
    ASSERT_TRUE(waitUntil([&] { return owner() == "u " + std::to_string(program.pid()) + "\n"; }, desktopPatience));
  }

  std::string windowsNamed(const std::string& name) {
    return desktop.run({"xdotool", "search", "--name", "^" + name + "$"}).value_or("");
  }

  std::vector<Pid> awaitChildren(const Process& program) {
    EXPECT_TRUE(waitUntil([&] { return !childrenOf(program.pid()).empty(); }, desktopPatience));
    return childrenOf(program.pid());
  }
  static void expectGone(const std::vector<Pid>& pids) {
    for (const Pid pid : pids) EXPECT_TRUE(waitUntil([&] { return !isAlive(pid); }, desktopPatience)) << pid;
  }
};

TEST_F(OneBellTest, ASecondStartAsksTheFirstToReopenAndEnds) {
  const auto first = startTollvane();
  awaitOwner(*first);
  const auto second = startTollvane();
  EXPECT_EQ(second->exitCode(desktopPatience), 0);
  EXPECT_TRUE(first->running());
  awaitOwner(*first);
}

TEST_F(OneBellTest, ASecondStartMayAskForTheMenu) {
  const auto first = startTollvane();
  awaitOwner(*first);
  const auto menuOf = [&] {
    return desktop
        .run({"xdotool", "search", "--onlyvisible", "--all", "--pid", std::to_string(first->pid()), "--class", "."})
        .value_or("");
  };
  const std::string before = menuOf();
  const auto second = desktop.start({TOLLVANE_BUNDLE "/Tollvane", "--show-menu"});
  EXPECT_EQ(second->exitCode(desktopPatience), 0);
  EXPECT_TRUE(waitUntil([&] { return menuOf() != before; }, desktopPatience)) << before;
  EXPECT_TRUE(first->running());
}

TEST_F(OneBellTest, AnUnknownOptionIsRefusedWithASentence) {
  const auto program = desktop.start({TOLLVANE_BUNDLE "/Tollvane", "--show-menus"});
  EXPECT_NE(program->exitCode(desktopPatience), 0);
  EXPECT_EQ(owner(), "");
}

TEST_F(OneBellTest, OfManyStartsAtOnceOnlyOneKeepsRunning) {
  std::vector<std::unique_ptr<Process>> starts;
  for (int i = 0; i < 6; ++i) starts.push_back(startTollvane());
  const auto running = [&] {
    return std::count_if(starts.begin(), starts.end(), [](const auto& each) { return each->running(); });
  };
  EXPECT_TRUE(waitUntil([&] { return running() == 1; }, desktopPatience));
  for (const auto& each : starts) {
    if (each->running()) {
      awaitOwner(*each);
    } else {
      EXPECT_EQ(each->exitCode(), 0);
    }
  }
}

TEST_F(OneBellTest, IfTheFirstOneHangsTheSecondStillDoesNotStay) {
  const auto first = startTollvane();
  awaitOwner(*first);
  first->signal(SIGSTOP);
  Process second({"sh", "-c", "exec \"$0\" 2>&1", TOLLVANE_BUNDLE "/Tollvane"},
                 {.output = Process::Output::read, .variables = desktop.variables(), .errors = std::nullopt});
  EXPECT_EQ(second.exitCode(desktopPatience), 1);
  EXPECT_THAT(second.rest(), HasSubstr("it is running already, but does not answer"));
  first->signal(SIGCONT);
}

TEST_F(OneBellTest, IfNothingShowsIconsItSaysSoAndTheBellComesWithThePanel) {
  const auto tollvane = startTollvane();
  ASSERT_TRUE(waitUntil([&] { return !windowsNamed("Tollvane").empty(); }, desktopPatience));
  desktop.startPanel();
  EXPECT_TRUE(waitUntil([&] { return !desktop.registeredItems().empty(); }, desktopPatience));
}

TEST_F(OneBellTest, StartedAtLoginItIsSilentAndWaitsForThePanel) {
  const auto tollvane = startTollvane({{"TOLLVANE_STARTED_AT_LOGIN", "1"}});
  awaitOwner(*tollvane);
  desktop.startPanel();
  EXPECT_TRUE(waitUntil([&] { return !desktop.registeredItems().empty(); }, desktopPatience));
  EXPECT_EQ(windowsNamed("This desktop.*"), "");
}

TEST_F(OneBellTest, EndsInGoodOrderWhenTheSessionBusGoes) {
  const auto tollvane = startTollvane();
  awaitOwner(*tollvane);
  const auto children = awaitChildren(*tollvane);
  desktop.killBus();
  spoilSession();
  EXPECT_EQ(tollvane->exitCode(desktopPatience), 0);
  expectGone(children);
}

TEST_F(OneBellTest, EndsInGoodOrderOnEverySignalThatAsksForIt) {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    const auto tollvane = startTollvane();
    awaitOwner(*tollvane);
    const auto children = awaitChildren(*tollvane);
    tollvane->signal(number);
    EXPECT_EQ(tollvane->exitCode(desktopPatience), 0);
    expectGone(children);
    EXPECT_TRUE(waitUntil([&] { return owner().empty(); }, desktopPatience));
  }
}

}  // namespace
}  // namespace tollvane::test
