#include "menu/bell.h"

#include <gtest/gtest.h>

#include "platform/linux/linux_wording.h"
#include "platform/macos/macos_wording.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

class BellTest : public testing::Test {
 protected:
  SoundEvent& add(std::string_view app, bool seen) {
    auto event = std::make_shared<SoundEvent>(clock.now(), app, kind::alertSound);
    event->seen = seen;
    events.insert(events.begin(), event);
    return *event;
  }
  Bell bell() const { return bellFor(events, dates, hearing, linuxWording); }

  test::VirtualClock clock;
  test::VirtualDates dates;
  std::vector<std::shared_ptr<SoundEvent>> events;
  Hearing hearing = Hearing::yes;
};

TEST_F(BellTest, WithoutSoundsItIsHollowAndSaysTollvane) {
  EXPECT_EQ(bell().symbolName, "bell");
  EXPECT_EQ(bell().toolTip, "Tollvane");
}

TEST_F(BellTest, WhileNoSoundCanBeNoticedTheTooltipSaysSo) {
  add("Mail", false);
  hearing = Hearing::noLogTool;
  EXPECT_EQ(bell().toolTip, "Tollvane can't hear any sounds: its program TollvaneLog doesn't run");
  hearing = Hearing::noSoundServer;
  EXPECT_EQ(bell().toolTip, "Tollvane can't hear any sounds: no sound server is running");
  EXPECT_EQ(bell().symbolName, "bell.fill");
  EXPECT_EQ(bellFor(events, dates, hearing, macWording).toolTip, "Last sound: Mail at 2:05:09 PM · 1 unseen");
}

TEST_F(BellTest, WithAllSoundsSeenItIsHollowAndTellsOfTheLast) {
  add("Chat", true);
  add("Mail", true);
  EXPECT_EQ(bell().symbolName, "bell");
  EXPECT_EQ(bell().toolTip, "Last sound: Mail at 2:05:09 PM");
}

TEST_F(BellTest, UnseenSoundsFillItAndAreCounted) {
  add("Chat", false);
  add("Mail", false);
  EXPECT_EQ(bell().symbolName, "bell.fill");
  EXPECT_EQ(bell().toolTip, "Last sound: Mail at 2:05:09 PM · 2 unseen");
}

TEST_F(BellTest, OneUnseenAmongFiftyFillsIt) {
  for (int i = 0; i < 50; ++i) add("App", i != 10);
  EXPECT_EQ(bell().symbolName, "bell.fill");
  EXPECT_EQ(bell().toolTip, "Last sound: App at 2:05:09 PM · 1 unseen");
}

TEST_F(BellTest, TheTooltipNamesTheNewestSoundEvenIfOnlyAnOlderOneIsUnseen) {
  add("Chat", false);
  clock.advance(std::chrono::hours(-2));
  add("Mail", true);
  EXPECT_EQ(bell().toolTip, "Last sound: Mail at 12:05:09 PM · 1 unseen");
}

TEST_F(BellTest, TheTooltipNamesTheTabInsteadOfItsBrowser) {
  SoundEvent& event = add("Firefox", true);
  event.tabTitle = "Inbox";
  event.tabHost = "mail.example.org";
  EXPECT_EQ(bell().toolTip, "Last sound: Inbox  (mail.example.org) at 2:05:09 PM");
}

}  // namespace
}  // namespace tollvane
