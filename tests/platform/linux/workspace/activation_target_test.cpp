#include <gtest/gtest.h>

#include <chrono>

#include "platform/linux/bell/shell_extension.h"
#include "platform/linux/workspace/kwin_scripting.h"
#include "platform/linux/workspace/window_raiser.h"
#include "tests/virtual/virtual_time.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

ActivationTarget player() {
  auto entry = std::make_shared<DesktopEntry>();
  entry->id = "org.example.Player";
  entry->startupWmClass = "PlayerWindow";
  entry->program = "/usr/bin/example-player";
  return {.pid = 100, .others = {101, 102}, .hosts = {50}, .entry = entry};
}

TEST(ActivationTarget, TheProcessThatWasAskedForComesBeforeItsSiblings) {
  EXPECT_LT(player().rankOfPid(100), player().rankOfPid(102));
  EXPECT_LT(player().rankOfPid(102), player().rankOfPid(50));
  EXPECT_FALSE(player().rankOfPid(51));
}

TEST(ActivationTarget, TheProcessThatStartedItComesBeforeItsSiblings) {
  ActivationTarget target = player();
  target.starters = {102};
  EXPECT_LT(target.rankOfPid(100), target.rankOfPid(102));
  EXPECT_LT(target.rankOfPid(102), target.rankOfPid(101));
}

TEST(ActivationTarget, AWindowWithoutAProcessMatchesNoProcess) {
  auto target = player();
  target.others.push_back(0);
  EXPECT_FALSE(target.rankOfPid(0));
  EXPECT_FALSE(target.rankOfPid(-1));
}

TEST(ActivationTarget, WindowsAreRecognisedByAnyOfTheApplicationsNames) {
  for (const char* name : {"playerwindow", "PlayerWindow", "org.example.Player", "example-player"})
    EXPECT_TRUE(player().rankOfName(name)) << name;
  for (const char* name : {"", "player", "other", "example-player-2"}) EXPECT_FALSE(player().rankOfName(name)) << name;
}

TEST(ActivationTarget, AnApplicationWithoutAnEntryHasNoNames) {
  EXPECT_FALSE((ActivationTarget{.pid = 1}.rankOfName("x")));
  auto target = player();
  auto nameless = std::make_shared<DesktopEntry>();
  target.entry = nameless;
  EXPECT_FALSE(target.rankOfName(""));
}

TEST(ActivationTarget, ItsOwnNameComesBeforeTheTerminalItRunsIn) {
  EXPECT_LT(player().rank(0, {"PlayerWindow"}), player().rank(50, {"xterm"}));
  EXPECT_EQ(player().rank(50, {"PlayerWindow"}), player().rankOfName("PlayerWindow")) << "the better of both ranks";
}

class Fixed : public WindowRaiser {
 public:
  explicit Fixed(Raised answer) : answer_(answer) {}
  void raise(const ActivationTarget& target, std::function<void(Raised)> done) override {
    ++asked;
    done(target.isTitleNeeded && asked < titleAppearsAt ? Raised::noWindow : answer_);
  }
  int titleAppearsAt = 0;
  int asked = 0;

 private:
  Raised answer_;
};

struct Time {
  test::VirtualClock clock;
  test::VirtualMainQueue queue{clock};
};

Raised ask(Activator& activator, const std::string& title = {}) {
  std::optional<Raised> answer;
  activator.raise({.title = title}, [&](Raised raised) { answer = raised; });
  return answer.value();
}

TEST(Activator, TheWaysAreTriedInOrderUntilOneSucceeds) {
  Time time;
  Fixed nowhere(Raised::unknown), there(Raised::yes), notAsked(Raised::yes);
  Activator activator({&nowhere, &there, &notAsked}, time.queue);
  EXPECT_EQ(ask(activator), Raised::yes);
  EXPECT_EQ(notAsked.asked, 0);
}

TEST(Activator, ReportsNoWindowIfAnyWayIsCertainOfThat) {
  Time time;
  Fixed none(Raised::noWindow), nowhere(Raised::unknown);
  Activator both({&none, &nowhere}, time.queue);
  EXPECT_EQ(ask(both), Raised::noWindow);
  Activator neither({&nowhere}, time.queue);
  EXPECT_EQ(ask(neither), Raised::unknown);
  Activator empty({}, time.queue);
  EXPECT_EQ(ask(empty), Raised::unknown);
}

TEST(Activator, AWindowThatGetsTheTitleOfItsTabOnlyNowIsRaisedToo) {
  Time time;
  Fixed browser(Raised::yes);
  browser.titleAppearsAt = 4;  // until then another window of the browser is raised
  Activator activator({&browser}, time.queue);
  EXPECT_EQ(ask(activator, "News"), Raised::yes);
  EXPECT_EQ(browser.asked, 1) << "at once";
  time.queue.advance(200ms);
  EXPECT_EQ(browser.asked, 3);
  time.queue.advance(1min);
  EXPECT_EQ(browser.asked, 4) << "once it is there, nothing is asked any more";
}

TEST(Activator, ATitleThatNeverAppearsIsLookedForForASecond) {
  Time time;
  Fixed browser(Raised::yes);
  browser.titleAppearsAt = 1000;
  Activator activator({&browser}, time.queue);
  ask(activator, "News");
  time.queue.advance(1min);
  EXPECT_EQ(browser.asked, 11);
  EXPECT_TRUE(time.queue.idle());
}

TEST(Activator, ALaterRequestEndsTheSearchForATitle) {
  Time time;
  Fixed browser(Raised::yes);
  browser.titleAppearsAt = 1000;
  Activator activator({&browser}, time.queue);
  ask(activator, "News");
  ask(activator);
  time.queue.advance(1min);
  EXPECT_EQ(browser.asked, 2);
}

TEST(Activator, WithoutATitleOrAWindowNothingIsLookedFor) {
  Time time;
  Fixed window(Raised::yes), none(Raised::noWindow);
  Activator activator({&window}, time.queue), nothing({&none}, time.queue);
  ask(activator);
  ask(nothing, "News");
  EXPECT_TRUE(time.queue.idle());
}

// Windows of compositors.

TEST(BestWindow, TheTitleCountsFirstThenTheProcessThenWhatIsInFrontThenHeight) {
  ActivationTarget target = player();
  target.title = "Inbox";
  std::vector<OpenWindow> windows = {
      {.id = "low", .pid = 101, .height = 1},
      {.id = "high", .pid = 102, .height = 5},
      {.id = "stranger", .pid = 999, .isActive = true, .height = 9},
  };
  EXPECT_EQ(bestWindowOf(windows, target)->id, "high");
  windows.push_back({.id = "front", .pid = 101, .isActive = true});
  EXPECT_EQ(bestWindowOf(windows, target)->id, "front");
  windows.push_back({.id = "own", .pid = 100});
  EXPECT_EQ(bestWindowOf(windows, target)->id, "own");
  windows.push_back({.id = "titled", .pid = 102, .title = "Inbox - Mail"});
  EXPECT_EQ(bestWindowOf(windows, target)->id, "titled") << "another profile of a browser is another process";
  windows.push_back({.id = "named", .names = {"", "example-player"}, .title = "Inbox", .isActive = true, .height = 9});
  EXPECT_EQ(bestWindowOf(windows, target)->id, "titled") << "a name tells less than a process";
  windows.push_back({.id = "own titled", .pid = 100, .title = "Inbox"});
  EXPECT_EQ(bestWindowOf(windows, target)->id, "own titled");
}

TEST(BestWindow, OthersWindowsAreNone) {
  EXPECT_FALSE(bestWindowOf({}, player()));
  EXPECT_FALSE(bestWindowOf({{.id = "x", .pid = 7, .names = {"other"}}, {.id = "y"}}, player()));
}

TEST(KWinWindows, TheListOfTheScriptIsRead) {
  const auto windows = kwinWindows(R"([{"id": "{1}", "pid": 100, "title": "T", "name": "n", "className": "c",
                                        "entry": "e", "active": true, "height": 3}, {"pid": "x"}, 7])");
  ASSERT_TRUE(windows);
  ASSERT_EQ(windows->size(), 3U);
  EXPECT_EQ(windows->front().id, "{1}");
  EXPECT_EQ(windows->front().pid, 100);
  EXPECT_EQ(windows->front().names, (std::vector<std::string>{"c", "n", "e"}));
  EXPECT_TRUE(windows->front().isActive);
  for (const char* text : {"", "{}", "[", "null", "\xff"}) EXPECT_FALSE(kwinWindows(text)) << text;
}

TEST(KWinWindows, OneOfAThousandIsFound) {
  QByteArray list = "[";
  for (int pid = 1000; pid > 0; --pid) {
    const QByteArray number = QByteArray::number(pid);
    list += "{\"id\": \"{" + number + "}\", \"pid\": " + number + ", \"title\": \"" + QByteArray(400, 'x') + "\"},";
  }
  list.back() = ']';
  const auto windows = kwinWindows(list);
  ASSERT_TRUE(windows);
  EXPECT_EQ(windows->size(), 1000U);
  EXPECT_EQ(bestWindowOf(*windows, player())->id, "{100}");
}

TEST(ShellExtension, EachGenerationOfTheShellHasItsForm) {
  for (const char* version : {"43.9", "44", "43"}) EXPECT_EQ(formForShell(version), "43") << version;
  for (const char* version : {"45.0", "46.beta", "48.7"}) EXPECT_EQ(formForShell(version), "45") << version;
  for (const char* version : {"", "3.38", "42.9", "49.0", "999999999999", "x", "-43"})
    EXPECT_EQ(formForShell(version), "") << version;
}

}  // namespace
}  // namespace tollvane
