#include "soundlog/notification_service.h"

#include <gtest/gtest.h>

#include "tests/soundlog/makers/fake_proc.h"

namespace tollvane::soundlog {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

class NotificationServiceTest : public ::testing::Test {
 protected:
  NotificationServiceTest() {
    proc_.add({.pid = 100, .startTime = 10, .executable = "/opt/terminal"});
    proc_.add({.pid = 200, .parent = 100, .startTime = 20, .executable = "/opt/shell"});
    proc_.add({.pid = 300, .parent = 200, .startTime = 30, .executable = "/opt/pacat"});
  }

  Maker checked(Pid pid) const { return makers_.remember({.checkedPid = pid}); }
  bool plays(const Maker& maker) const { return service_.plays(maker, now_); }

  test::FakeProc proc_;
  ProcFs processes_{proc_.root()};
  Makers makers_{processes_};
  NotificationService service_{processes_, makers_};
  Instant now_ = Instant(1h);
};

TEST_F(NotificationServiceTest, TheNotificationServiceIsTheOwnerOfTheName) {
  EXPECT_FALSE(plays(checked(300)));
  service_.setOwner(300);
  EXPECT_TRUE(plays(checked(300)));
  EXPECT_FALSE(plays(checked(200)));
  service_.setOwner(std::nullopt);
  EXPECT_FALSE(plays(checked(300)));
}

TEST_F(NotificationServiceTest, ALaterProcessWithTheServicesNumberIsNotTheService) {
  service_.setOwner(300);
  proc_.add({.pid = 300, .startTime = 99, .executable = "/opt/game"});
  EXPECT_FALSE(plays(checked(300)));
}

TEST_F(NotificationServiceTest, OthersOfTheServicesOwnUnitAreTheService) {
  const std::string unit = "/user.slice/session.slice/notifier.service";
  proc_.add({.pid = 600, .parent = 100, .startTime = 60, .executable = "/opt/notifier", .cgroup = unit});
  proc_.add({.pid = 601, .parent = 600, .startTime = 61, .executable = "/opt/player", .cgroup = unit});
  proc_.add({.pid = 602, .parent = 600, .startTime = 62, .executable = "/opt/player", .cgroup = unit + "/deeper"});
  service_.setOwner(600);
  EXPECT_TRUE(plays(checked(601)));
  EXPECT_FALSE(plays(checked(602)));
  EXPECT_FALSE(plays(checked(300)));
}

TEST_F(NotificationServiceTest, AUnitThatTheServiceWasStartedInAlongWithOthersIsNotItsOwn) {
  const std::string unit = "/user.slice/dbus.service";
  proc_.add({.pid = 700, .startTime = 70, .executable = "/usr/bin/dbus-daemon", .cgroup = unit});
  proc_.add({.pid = 701, .parent = 700, .startTime = 71, .executable = "/opt/notifier", .cgroup = unit});
  proc_.add({.pid = 702, .parent = 700, .startTime = 72, .executable = "/opt/editor", .cgroup = unit});
  service_.setOwner(701);
  EXPECT_TRUE(plays(checked(701)));
  EXPECT_FALSE(plays(checked(702)));
}

TEST_F(NotificationServiceTest, AWholeSessionIsNobodysUnit) {
  const std::string scope = "/user.slice/session-2.scope";
  proc_.add({.pid = 800, .parent = 100, .startTime = 80, .executable = "/opt/notifier", .cgroup = scope});
  proc_.add({.pid = 801, .parent = 100, .startTime = 81, .executable = "/opt/game", .cgroup = scope});
  service_.setOwner(800);
  EXPECT_FALSE(plays(checked(801)));
}

TEST_F(NotificationServiceTest, AScriptForANotificationPlaysForTheServiceAndSaysForWhom) {
  proc_.add({.pid = 900, .startTime = 90, .executable = "/opt/pacat", .environment = "A=1\0DUNST_APP_NAME=x\0"s});
  proc_.add({.pid = 901,
             .startTime = 91,
             .executable = "/opt/pacat",
             .environment = "SWAYNC_SUMMARY=y\0SWAYNC_DESKTOP_ENTRY=org.example.X\0SWAYNC_APP_NAME=x\0"s});
  const Maker ofDunst = checked(900);
  const Maker ofSwaync = checked(901);
  proc_.remove(900);
  EXPECT_TRUE(plays(ofDunst));
  EXPECT_EQ(ofDunst.playsFor, (NotificationWords{"x", ""}));
  EXPECT_TRUE(plays(ofSwaync));
  EXPECT_EQ(ofSwaync.playsFor, (NotificationWords{"x", "org.example.X"}));
  EXPECT_FALSE(plays(checked(300)));
}

TEST_F(NotificationServiceTest, WhatReceivesANotificationPlaysForFiveSeconds) {
  service_.setOwner(200);
  service_.received(300, now_);
  EXPECT_TRUE(plays(checked(300)));
  EXPECT_TRUE(plays(checked(200))) << "the owner still does";
  now_ += 5s - 1ns;
  EXPECT_TRUE(plays(checked(300)));
  now_ += 1ns;
  EXPECT_FALSE(plays(checked(300))) << "a shell has other sounds, too";
  service_.received(300, now_);
  EXPECT_TRUE(plays(checked(300)));
}

TEST_F(NotificationServiceTest, ALaterProcessWithAReceiversNumberIsNone) {
  service_.received(300, now_);
  proc_.add({.pid = 300, .startTime = 99, .executable = "/opt/game"});
  EXPECT_FALSE(plays(checked(300)));
}

class RecentNoticesTest : public ::testing::Test {
 protected:
  std::optional<std::string> again(const Maker& maker) { return notices_.presentAgainFor(maker, now_); }
  void presented(const std::string& name, const std::string& identity) {
    notices_.presented({.applicationName = name}, identity, now_);
  }
  static Maker script(const std::string& name, const std::string& entry = "") {
    Maker maker;
    maker.playsFor = NotificationWords{name, entry};
    return maker;
  }

  RecentNotices notices_;
  Instant now_ = Instant(1h);
};

TEST_F(RecentNoticesTest, TheLastNotificationIsNotPresentedAgain) {
  presented("Alpha", "alpha");
  EXPECT_EQ(again({}), std::nullopt);
  EXPECT_EQ(again(script("Alpha")), std::nullopt);
}

TEST_F(RecentNoticesTest, AScriptOfAnEarlierOneHasItPresentedAgain) {
  presented("Alpha", "alpha");
  presented("Beta", "beta");
  EXPECT_EQ(again(script("Alpha")), "alpha");
  EXPECT_EQ(again(script("Alpha")), std::nullopt) << "now the reader knows";
  EXPECT_EQ(again(script("Beta")), "beta");
}

TEST_F(RecentNoticesTest, ASoundThatNamesNoNotificationBelongsToTheNewestOne) {
  presented("Alpha", "alpha");
  presented("Beta", "beta");
  EXPECT_EQ(again(script("Alpha")), "alpha");
  EXPECT_EQ(again({}), "beta");
}

TEST_F(RecentNoticesTest, AnOldNotificationHasOnlyTheSoundsOfItsScripts) {
  presented("Alpha", "alpha");
  presented("Beta", "beta");
  EXPECT_EQ(again(script("Alpha")), "alpha");
  now_ += 5s;
  EXPECT_EQ(again({}), std::nullopt);
  EXPECT_EQ(again(script("Beta")), "beta");
}

TEST_F(RecentNoticesTest, WordsThatNoNotificationHadSpeakForThemselves) {
  EXPECT_EQ(again(script("Alpha")), "Alpha");
  EXPECT_EQ(again(script("Alpha", "org.example.Alpha")), "org.example.Alpha");
  EXPECT_EQ(again(script("")), std::nullopt);
}

TEST_F(RecentNoticesTest, TheNewestNotificationWithTheWordsIsMeant) {
  presented("Mail", "one");
  presented("Mail", "two");
  presented("Chat", "chat");
  EXPECT_EQ(again(script("Mail")), "two");
}

TEST_F(RecentNoticesTest, NoMoreThanSomeAreKept) {
  for (std::size_t i = 0; i <= RecentNotices::most; ++i)
    presented("name " + std::to_string(i), "id " + std::to_string(i));
  EXPECT_EQ(again(script("name 1")), "id 1");
  EXPECT_EQ(again(script("name 0")), "name 0") << "forgotten";
}

}  // namespace
}  // namespace tollvane::soundlog
