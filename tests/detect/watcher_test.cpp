#include "detect/watcher.h"

#include <gtest/gtest.h>

#include "tests/virtual/log_lines.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;
using test::logLine;
using test::notificationPresented;
using test::outputStarted;
using test::soundRequested;

class WatcherTest : public testing::Test {
 protected:
  WatcherTest() { listen(*watcher); }

  void listen(Watcher& to) {
    to.onEvent = [this](const std::shared_ptr<SoundEvent>& event) {
      heard.push_back(event->app + ": " + event->kind);
      dates.push_back(event->date);
      EXPECT_FALSE(event->hasTab());
      EXPECT_FALSE(event->seen);
    };
  }
  void print(std::string_view bytes) { system.children.last().print(bytes); }

  using Heard = std::vector<std::string>;

  test::VirtualPlatform system;
  Resolver resolver{system.processes, system.workspace, system.locations, system.files};
  std::unique_ptr<Watcher> watcher =
      std::make_unique<Watcher>(system.queue, system.clock, system.children, system.bundle, resolver);
  Heard heard;
  std::vector<TimePoint> dates;
};

TEST_F(WatcherTest, TheLogToolIsStartedWithItsFiveArguments) {
  watcher->start();
  const auto& launch = system.children.last().launch;
  EXPECT_EQ(launch.executable, "/usr/bin/log");
  ASSERT_EQ(launch.arguments.size(), 5u);
  EXPECT_EQ(std::vector(launch.arguments.begin(), launch.arguments.end() - 1),
            (std::vector<std::string>{"stream", "--style", "ndjson", "--predicate"}));
  EXPECT_EQ(
      launch.arguments[4],
      "(process == \"audiomxd\" AND eventMessage CONTAINS \"update_running_state\") OR (process == "
      "\"systemsoundserverd\" AND eventMessage CONTAINS \"Incoming Request\") OR (process == \"usernoted\" AND "
      "(eventMessage CONTAINS \"Request: Starting\" OR eventMessage CONTAINS \"Presenting <NotificationRecord\"))");
  EXPECT_EQ(launch.arguments[4].size(), 288u);
}

TEST_F(WatcherTest, EachKindOfSoundIsHeard) {
  watcher->start();
  print(outputStarted("player", 4242));
  print(soundRequested("mail", 4243));
  print(soundRequested("NotificationCent", 4244));
  EXPECT_EQ(heard,
            (Heard{"player: started playing audio", "mail: alert sound", "Notification Center: notification sound"}));
}

TEST_F(WatcherTest, AMakerThatHasEndedIsCreditedToTheAncestorThatItsLineNames) {
  watcher->start();
  system.processes.parents = {{50, 20}, {20, 1}, {30, 1}};
  system.workspace.addRunning(20, "Terminal");
  system.workspace.addRunning(30, "Editor");
  const std::string message = test::outputMessage("paplay", "4242");
  const auto line = [&](std::string_view more) {
    std::string text = logLine("/usr/sbin/audiomxd", message);
    return text.insert(text.rfind('}'), more);
  };
  print(line(R"(,"ancestors":[49,50,30])"));
  EXPECT_EQ(heard, Heard{"Terminal: started playing audio"}) << "49 has ended, too";
  system.processes.parents[4242] = 30;
  print(line(R"(,"ancestors":[50])"));
  EXPECT_EQ(heard.back(), "Editor: started playing audio") << "the maker itself runs";
}

TEST_F(WatcherTest, TheLinesNameOfItsMakerIsShownIfThereIsNoOther) {
  watcher->start();
  const auto line = [&](const std::string& message, std::string_view path) {
    std::string text = logLine(path, message);
    return text.insert(text.rfind('}'), R"json(,"makerName":"paplay (backup-done.sh)")json");
  };
  print(line(test::outputMessage("paplay", "4242"), "/usr/sbin/audiomxd"));
  print(line(test::requestMessage("paplay", "4242"), "/usr/sbin/systemsoundserverd"));
  system.workspace.addRunning(4243, "Player");
  print(line(test::outputMessage("paplay", "4243"), "/usr/sbin/audiomxd"));
  EXPECT_EQ(heard, (Heard{"paplay (backup-done.sh): started playing audio", "paplay (backup-done.sh): alert sound",
                          "Player: started playing audio"}));
}

TEST_F(WatcherTest, AncestorsThatAreNoneDoNoHarm) {
  watcher->start();
  for (const std::string_view ancestors : {R"("x")", "7", "[]", R"(["a",{},null,1.5,-3,99999999999])", "[[20]]"}) {
    std::string text = outputStarted("player", 4242);
    print(text.insert(text.rfind('}'), std::string(",\"ancestors\":").append(ancestors)));
    system.clock.advance(2s);
  }
  EXPECT_EQ(heard, Heard(5, "player: started playing audio"));
}

TEST_F(WatcherTest, TheMakerIsResolvedAndDatedAtTheMomentOfTheSound) {
  watcher->start();
  system.workspace.addRunning(4242, "Google Chrome");
  system.queue.advance(7s);
  print(outputStarted("chrome", 4242));
  EXPECT_EQ(heard, Heard{"Google Chrome: started playing audio"});
  EXPECT_EQ(dates.front(), system.clock.now());
}

TEST_F(WatcherTest, TheSoundRemembersTheProcessThatMadeIt) {
  watcher->start();
  std::optional<RunningApplication> maker;
  watcher->onEvent = [&](const std::shared_ptr<SoundEvent>& event) { maker = event->maker; };
  system.workspace.addRunning(4242, "Terminal");
  system.workspace.running.back().application.startTime = 7;
  print(outputStarted("terminal", 4242));
  EXPECT_EQ(maker, system.workspace.running.back().application);
  print(soundRequested("mail", 4243));
  EXPECT_EQ(maker, std::nullopt);
}

TEST_F(WatcherTest, ALineInTwoPiecesIsHeardOnceWhenItsNewlineArrives) {
  watcher->start();
  const std::string line = outputStarted("player", 4242);
  print(line.substr(0, 30));
  print(line.substr(30, line.size() - 31));
  EXPECT_EQ(heard, Heard{});
  print("\n");
  EXPECT_EQ(heard, Heard{"player: started playing audio"});
}

TEST_F(WatcherTest, SeveralLinesInOneReadAreHeardInOrder) {
  watcher->start();
  print(outputStarted("one", 1001) + outputStarted("two", 1002) + soundRequested("three", 1003));
  EXPECT_EQ(heard, (Heard{"one: started playing audio", "two: started playing audio", "three: alert sound"}));
}

TEST_F(WatcherTest, BytesAfterTheLastNewlineOutliveTheLogTool) {
  watcher->start();
  const std::string line = outputStarted("player", 4242);
  print("\n" + line.substr(0, 20));
  system.children.last().end();
  system.queue.advance(3s);
  ASSERT_EQ(system.children.programs.size(), 2u);
  print(line.substr(20));
  EXPECT_EQ(heard, Heard{"player: started playing audio"});
}

TEST_F(WatcherTest, AnEndedLogToolIsStartedAgainThreeSecondsLaterForEver) {
  watcher->start();
  for (std::size_t starts = 1; starts < 10; ++starts) {
    system.children.last().end();
    system.queue.advance(2999ms);
    EXPECT_EQ(system.children.programs.size(), starts);
    system.queue.advance(1ms);
    EXPECT_EQ(system.children.programs.size(), starts + 1);
  }
}

TEST_F(WatcherTest, ALogToolThatCannotBeStartedIsTriedAgainAfterGrowingPauses) {
  system.children.cannotStart = true;
  watcher->start();
  for (const auto pause : {3s, 6s, 12s, 24s, 48s, 96s, 192s, 300s, 300s}) {
    const int attempts = system.children.attempts;
    system.queue.advance(pause - 1ms);
    EXPECT_EQ(system.children.attempts, attempts);
    system.queue.advance(1ms);
    EXPECT_EQ(system.children.attempts, attempts + 1);
  }
  system.children.cannotStart = false;
  system.queue.advance(300s);
  print(outputStarted("player", 4242));
  EXPECT_EQ(heard, Heard{"player: started playing audio"});
  system.children.cannotStart = true;
  const int attempts = system.children.attempts;
  system.children.last().end();
  system.queue.advance(6s);
  EXPECT_EQ(system.children.attempts, attempts + 2) << "the pauses begin anew";
  watcher->stop();
  system.queue.advance(1h);
  EXPECT_EQ(system.children.attempts, attempts + 2);
}

TEST_F(WatcherTest, SaysThatNothingIsHeardWhileTheLogToolDoesNotRun) {
  std::vector<Hearing> changes;
  watcher->onHearingChange = [&] { changes.push_back(watcher->hearing()); };
  watcher->start();
  EXPECT_EQ(watcher->hearing(), Hearing::yes);
  for (int i = 0; i < 3; ++i) {  // it ends at once, again and again
    system.children.last().end();
    EXPECT_EQ(watcher->hearing(), Hearing::noLogTool);
    system.queue.advance(3s);
    EXPECT_EQ(watcher->hearing(), Hearing::noLogTool);
  }
  system.queue.advance(3s);
  EXPECT_EQ(changes, (std::vector{Hearing::noLogTool, Hearing::yes}));
}

TEST_F(WatcherTest, SaysThatThereIsNoSoundServerUntilThereIsOne) {
  std::vector<Hearing> changes;
  watcher->onHearingChange = [&] { changes.push_back(watcher->hearing()); };
  watcher->start();
  for (int i = 0; i < 2; ++i) print(test::logLine("/tollvane/TollvaneLog", "sound_server=missing"));
  print(test::logLine("/usr/bin/other", "sound_server=found"));
  EXPECT_EQ(changes, std::vector{Hearing::noSoundServer});
  print(test::logLine("/tollvane/TollvaneLog", "sound_server=found"));
  EXPECT_EQ(changes, (std::vector{Hearing::noSoundServer, Hearing::yes}));
  EXPECT_EQ(heard, Heard{});
}

TEST_F(WatcherTest, AStoppedWatcherEndsTheLogToolAndDoesNotStartItAgain) {
  watcher->start();
  watcher->stop();
  EXPECT_TRUE(system.children.last().terminationAsked);
  EXPECT_FALSE(system.children.last().running);
  system.queue.advance(1h);
  EXPECT_EQ(system.children.attempts, 1);
}

TEST_F(WatcherTest, AWatcherStoppedWhileARestartIsPendingStaysStopped) {
  watcher->start();
  system.children.last().end();
  watcher->stop();
  system.queue.advance(1h);
  EXPECT_EQ(system.children.attempts, 1);
}

TEST_F(WatcherTest, StoppingAWatcherThatWasNeverStartedDoesNothing) {
  watcher->stop();
  EXPECT_EQ(system.children.attempts, 0);
}

TEST_F(WatcherTest, NothingHappensOnceTheWatcherIsGone) {
  watcher->start();
  const auto program = system.children.programs.back();
  watcher.reset();
  program->print(outputStarted("player", 4242));
  program->end();
  system.queue.advance(1h);
  EXPECT_EQ(heard, Heard{});
  EXPECT_EQ(system.children.attempts, 1);
}

TEST_F(WatcherTest, RepeatsWithinOneAndAHalfSecondsAreOneSound) {
  watcher->start();
  print(outputStarted("player", 4242));
  system.queue.advance(1s);
  print(outputStarted("player", 4242));
  EXPECT_EQ(heard.size(), 1u);
  system.queue.advance(499ms);
  print(outputStarted("player", 4242));
  EXPECT_EQ(heard.size(), 1u);
  system.queue.advance(1ms);
  print(outputStarted("player", 4242));
  EXPECT_EQ(heard.size(), 2u);
}

TEST_F(WatcherTest, SoundsSixteenTenthsApartAreTwo) {
  watcher->start();
  print(outputStarted("player", 4242));
  system.queue.advance(1600ms);
  print(outputStarted("player", 4242));
  EXPECT_EQ(heard.size(), 2u);
}

TEST_F(WatcherTest, OfASteadyStreamOfRepeatsOneIsHeardEachOneAndAHalfSeconds) {
  watcher->start();
  for (int i = 0; i < 61; ++i) {
    print(outputStarted("player", 4242));
    system.queue.advance(100ms);
  }
  EXPECT_EQ(heard.size(), 5u);  // at 0.0, 1.5, 3.0, 4.5 and 6.0 s
}

TEST_F(WatcherTest, AWallClockThatIsSetBackSuppressesNoSound) {
  watcher->start();
  print(outputStarted("player", 4242));
  system.clock.setWallClock(-1h);
  system.queue.advance(2s);
  print(outputStarted("player", 4242));
  EXPECT_EQ(heard.size(), 2u);
  EXPECT_EQ(dates.back(), system.clock.now());
}

TEST_F(WatcherTest, OneApplicationsKindsAreDifferentSounds) {
  watcher->start();
  print(soundRequested("player", 4242) + outputStarted("player", 4242));
  EXPECT_EQ(heard, (Heard{"player: alert sound", "player: started playing audio"}));
}

TEST_F(WatcherTest, ProcessesOfOneApplicationAreOneSound) {
  watcher->start();
  system.workspace.addRunning(1001, "Google Chrome");
  system.workspace.addRunning(1002, "Google Chrome");
  print(outputStarted("chrome", 1001) + outputStarted("chrome", 1002));
  EXPECT_EQ(heard.size(), 1u);
}

TEST_F(WatcherTest, ManyApplicationsAreAllHeardAndTheirRepeatsAreStillSuppressed) {
  watcher->start();
  std::string lines;
  for (int i = 0; i < 5000; ++i) lines += outputStarted("player " + std::to_string(i), 10'000 + i);
  print(lines);
  EXPECT_EQ(heard.size(), 5000u);
  print(lines);
  EXPECT_EQ(heard.size(), 5000u);
  system.queue.advance(1500ms);
  print(lines);
  EXPECT_EQ(heard.size(), 10'000u);
}

TEST_F(WatcherTest, SoundsWithEndlessNamesAreHeardAndTheirRepeatsAreSuppressed) {
  watcher->start();
  const std::string one = outputStarted(std::string(1 << 20, 'a'), 1);
  print(one + outputStarted(std::string(1 << 20, 'b'), 2) + one);
  EXPECT_EQ(heard.size(), 2u);
  system.queue.advance(1500ms);
  print(one);
  EXPECT_EQ(heard.size(), 3u);
}

TEST_F(WatcherTest, ASoundWithoutAReceiverIsLostButItsRepeatsAreStillSuppressed) {
  watcher->onEvent = nullptr;
  watcher->start();
  print(outputStarted("player", 4242));
  listen(*watcher);
  print(outputStarted("player", 4242));
  EXPECT_EQ(heard, Heard{});
}

TEST_F(WatcherTest, NotificationUpToFiveSecondsOldIsCreditedToItsApplication) {
  watcher->start();
  system.workspace.installed["com.example.mail"] = "/Applications/Mail.app";
  print(notificationPresented("com.example.mail"));
  EXPECT_EQ(heard, Heard{});
  system.queue.advance(4900ms);
  print(soundRequested("NotificationCent", 300));
  EXPECT_EQ(heard, Heard{"Mail: notification sound"});
}

TEST_F(WatcherTest, NotificationAfterFiveSecondsIsCreditedToNotificationCenter) {
  watcher->start();
  print(notificationPresented("com.example.mail"));
  system.queue.advance(5s);
  print(soundRequested("NotificationCent", 300));
  EXPECT_EQ(heard, Heard{"Notification Center: notification sound"});
}

TEST_F(WatcherTest, EveryRequestWithinTheFiveSecondsIsCreditedToTheSameApplication) {
  watcher->start();
  print(notificationPresented("com.example.mail"));
  print(soundRequested("usernoted", 300));
  system.queue.advance(2s);
  print(soundRequested("usernoted", 300));
  EXPECT_EQ(heard, (Heard{"com.example.mail: notification sound", "com.example.mail: notification sound"}));
}

TEST_F(WatcherTest, TheLatestNotificationCounts) {
  watcher->start();
  print(notificationPresented("com.example.mail") + notificationPresented("com.example.chat"));
  print(soundRequested("NotificationCent", 300));
  EXPECT_EQ(heard, Heard{"com.example.chat: notification sound"});
}

TEST_F(WatcherTest, BrokenLinesAreDroppedAndLaterOnesAreHeard) {
  watcher->start();
  const std::string good = outputStarted("bad", 4242);
  const std::string withoutPath = R"m({"eventMessage":"{\"name\":\"bad(1)\",\"output_running\":true}"})m";
  const std::string notUtf8 = std::string(good).replace(good.find("bad"), 3, "b\xff");
  const std::string bad[] = {
      "\n",
      "Filtering the log data using \"process == ...\"\n",
      "[]\n",
      "null\n",
      good.substr(0, good.size() - 2) + "\n",                                    // cut short
      good.substr(0, good.size() - 1) + "}\n",                                   // one character too long
      logLine("", test::outputMessage("bad", "4242")),                           // no process
      logLine("/usr/sbin/audiomxd", test::outputMessage("bad", "4242", false)),  // stopped
      logLine("/usr/sbin/audiomxd", test::outputMessage("systemsoundserverd", "123")),
      logLine("/usr/sbin/audiomxd", test::outputMessage("bad", "12345678901")),  // beyond 32 bits
      withoutPath + "\n",
      notUtf8,
      std::string("{\0}\n", 4),
      std::string(100'000, '{') + "\n",
  };
  for (const auto& line : bad) {
    print(line);
    EXPECT_EQ(heard, Heard{}) << line.substr(0, 200);
  }
  print(outputStarted("good", 4242));
  EXPECT_EQ(heard, Heard{"good: started playing audio"});
}

TEST_F(WatcherTest, ALineOfAlmost16MebibytesIsHeardLikeAnyOther) {
  watcher->start();
  std::string line = outputStarted("player", 4242);
  line.insert(1, "\"padding\":\"" + std::string((16 << 20) - 1000, 'x') + "\",");
  for (std::size_t at = 0; at < line.size(); at += 65'536) print(std::string_view(line).substr(at, 65'536));
  EXPECT_EQ(heard, Heard{"player: started playing audio"});
}

TEST_F(WatcherTest, AnEndlessLineIsDroppedAndTheNextOneIsHeard) {
  watcher->start();
  const std::string piece(1 << 20, 'x');
  for (int i = 0; i < 300; ++i) print(piece);
  print("\n" + outputStarted("player", 4242));
  EXPECT_EQ(heard, Heard{"player: started playing audio"});
}

}  // namespace
}  // namespace tollvane
