// A month of sounds through the whole core, on the virtual clock: a million sounds (fewer under the sanitizers), with
// the wall clock set back and forth now and then. Everything must be as at the beginning afterwards, except for the
// history.

#include <gtest/gtest.h>

#include <algorithm>

#include "app/app_delegate.h"
#include "support/json_value.h"
#include "tests/support/recording_connection.h"
#include "tests/virtual/log_lines.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

#ifdef TOLLVANE_SANITIZED
constexpr int sounds = 100'000;  // the sanitizers make each sound 25 times slower
#else
constexpr int sounds = 1'000'000;
#endif
constexpr auto pause = 2592ms;  // a million of them are 30 days

class MonthTest : public testing::Test {
 protected:
  MonthTest() {
    system.bundle.info["TollvaneSite"] = "https://tollvane.invalid";
    delegate->applicationDidFinishLaunching();
    delegate->link().connections.push_back(firefox);
    settle();
  }
  ~MonthTest() override { delegate->link().connections.clear(); }

  void settle() { system.queue.advance(30s); }
  std::string_view history() { return system.files.contents["/home/user/Application Support/Tollvane/history.txt"]; }
  std::ptrdiff_t lines() { return std::ranges::count(history(), '\n'); }

  test::VirtualPlatform system;
  std::shared_ptr<test::RecordingConnection> firefox = std::make_shared<test::RecordingConnection>(Browser::firefox);
  std::unique_ptr<AppDelegate> delegate = std::make_unique<AppDelegate>(system.platform());
};

TEST_F(MonthTest, AMillionSoundsFillOnlyTheHistory) {
  const auto timers = system.queue.waiting();
  const auto descriptors = system.queue.descriptorsWatched();
  std::vector<std::string> players;
  for (int i = 0; i < 7; ++i) players.push_back(test::outputStarted("Player " + std::to_string(i), 4242 + i));
  const std::string browser = test::outputStarted("Firefox", 4000);
  std::size_t mostTimers = 0;
  for (int i = 0; i < sounds; ++i) {
    const bool inTab = i % 100 == 0;
    system.children.last().print(inTab ? browser : players[static_cast<std::size_t>(i) % players.size()]);
    if (inTab) delegate->link().onTab(*firefox, {{"title", "Inbox"}, {"host", "mail"}, {"tabId", i}});
    if (i % 50'000 == 25'000) system.clock.setWallClock(i % 100'000 == 25'000 ? -26h : 25h);
    system.queue.advance(pause);
    mostTimers = std::max(mostTimers, system.queue.waiting());
    ASSERT_LE(delegate->recorder().events.size(), Recorder::maxEvents);
  }
  settle();
  EXPECT_EQ(lines(), sounds);
  EXPECT_EQ(delegate->recorder().events.size(), Recorder::maxEvents);
  EXPECT_EQ(system.queue.waiting(), timers) << "no timer is left over";
  EXPECT_LE(mostTimers, timers + 10) << "timers never pile up";
  EXPECT_EQ(system.queue.descriptorsWatched(), descriptors);
  EXPECT_LE(delegate->recorder().pendingTabs.size(), Recorder::maxEvents);
  EXPECT_EQ(system.children.attempts, 1);

  std::size_t ofTabs = 0;
  for (auto at = history().find("\tInbox  (mail)\n"); at != history().npos;
       at = history().find("\tInbox  (mail)\n", at + 1))
    ++ofTabs;
  EXPECT_EQ(ofTabs, sounds / 100) << "each sound of the browser has its tab";
}

TEST_F(MonthTest, AClockThatIsSetBackOrForthStopsNothing) {
  const auto timers = system.queue.waiting();
  int heard = 0;
  for (const auto jump : {Duration(-24h * 365), Duration(24h * 365 * 20), Duration(1h), Duration(-1h), Duration(-5s)}) {
    system.clock.setWallClock(jump);
    for (int i = 0; i < 3; ++i, ++heard) {
      system.children.last().print(test::outputStarted("Firefox", 4000));
      system.queue.advance(100ms);
      delegate->link().onTab(*firefox, {{"title", "Song"}, {"host", "h"}, {"tabId", heard}});
      system.queue.advance(5s);
      EXPECT_EQ(lines(), heard + 1);
      EXPECT_EQ(delegate->recorder().events.front()->tabId, heard);
    }
    // Set while the line waits for its tab.
    system.children.last().print(test::outputStarted("Firefox", 4000));
    system.clock.setWallClock(-jump);
    system.clock.setWallClock(jump / 2);
    system.queue.advance(5s);
    EXPECT_EQ(lines(), ++heard);
  }
  settle();
  EXPECT_EQ(system.queue.waiting(), timers);
}

}  // namespace
}  // namespace tollvane
