// What TollvaneLog says when real programs notify over a real bus, to a real notification service.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tests/soundlog/running_log.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;
using Heards = std::vector<Heard>;

class NotificationsTest : public ::testing::Test {
 protected:
  Heard presented(const std::string& identity) { return {"usernoted", identity, -1}; }

  PrivateSound sound_;
};

TEST_F(NotificationsTest, TheDesktopEntryIsTheIdentity) {
  sound_.startBus();
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  notify(sound_, "Mail", {"2", "urgency", "y", "1", "desktop-entry", "s", "org.example.Mail"});
  EXPECT_EQ(log.next(), presented("org.example.Mail"));
}

TEST_F(NotificationsTest, ANotificationWhoseApplicationPlaysItselfIsNotPresented) {
  sound_.startBus();
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  notify(sound_, "Mail", {"2", "suppress-sound", "b", "true", "desktop-entry", "s", "org.example.Quiet"});
  notify(sound_, "Mail", {"2", "suppress-sound", "b", "false", "desktop-entry", "s", "org.example.Loud"});
  EXPECT_EQ(log.next(), presented("org.example.Loud"));
}

TEST_F(NotificationsTest, HintsOfUnexpectedTypesDoNoHarm) {
  sound_.startBus();
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  notify(sound_, "",
         {"4", "desktop-entry", "i", "5", "suppress-sound", "as", "1", "x", "sender-pid", "d", "1.5", "desktop-entry",
          "s", "org.example.Strange"});
  EXPECT_EQ(log.next(), presented("org.example.Strange"));
  notify(sound_, "",
         {"2", "image-data", "(iiibiiay)", "1", "1", "4", "true", "8", "4", "4", "1", "2", "3", "4", "desktop-entry",
          "s", "org.example.Picture"});
  EXPECT_EQ(log.next(), presented("org.example.Picture"));
}

TEST_F(NotificationsTest, AnIdentityForgesNothing) {
  sound_.startBus();
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  notify(sound_, "", {"1", "desktop-entry", "s", "a\"\n{\"processImagePath\":\"x\"}"});
  EXPECT_EQ(log.next(), presented("a' {'processImagePath':'x'}"));
}

// dunst, on a screen of its own.
class DunstTest : public NotificationsTest {
 protected:
  void SetUp() override {
    screen_ = sound_.begin({"Xvfb", "-displayfd", "1", "-nolisten", "tcp", "-screen", "0", "640x480x24"},
                           Process::Output::read);
    const auto display = screen_->line();
    ASSERT_TRUE(display);
    sound_.setVariable("DISPLAY", ":" + *display);
    sound_.start();
  }

  // Each notification runs `script`, which gets a sound as $TONE.
  void startDunst(const std::string& script) {
    const auto file = sound_.directory() / "on-notification";
    std::ofstream(file) << "#!/bin/sh\n" << script << '\n';
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    std::filesystem::create_directories(sound_.directory() / "config" / "dunst");
    const auto configuration = sound_.directory() / "config" / "dunst" / "dunstrc";
    std::ofstream(configuration) << "[global]\n  notification_limit = 5\n[all]\n  summary = \"*\"\n  script = \""
                                 << file.string() << "\"\n";
    sound_.setVariable("TONE", sound_.tone(200ms));
    dunst_ = sound_.begin({"dunst", "-conf", configuration});
    ASSERT_TRUE(waitUntil([this] {
      return run({"busctl", "--user", "--timeout=2", "call", "org.freedesktop.Notifications",
                  "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "GetServerInformation"},
                 sound_.variables()) == 0;
    }));
  }

  std::unique_ptr<Process> screen_;
  std::unique_ptr<Process> dunst_;
};

TEST_F(DunstTest, ItsScriptsSoundIsTheNotificationsSound) {
  startDunst("exec pw-play \"$TONE\"");
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  ASSERT_TRUE(sound_.play({"notify-send", "-h", "string:desktop-entry:org.example.Mail", "Summary", "Body"}));
  EXPECT_EQ(log.next(), presented("org.example.Mail")) << "the notification comes before its sound";
  const auto sound = log.next();
  ASSERT_TRUE(sound);
  EXPECT_EQ(sound->speaker, "systemsoundserverd");
  EXPECT_EQ(sound->name, "NotificationCenter");
  EXPECT_EQ(log.heardSoFar(), Heards());
}

// The sender waits until its notification is closed, as applications live on after theirs.
TEST_F(DunstTest, WithoutAnEntryTheSenderIsWhatItCallsItself) {
  startDunst("exit 0");
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  const auto sender = sound_.begin({"notify-send", "--wait", "--app-name=Anything", "Summary"});
  EXPECT_EQ(log.next(), presented("Anything"));
}

TEST_F(DunstTest, WithoutAnEntryTheSendersApplicationIsTheIdentity) {
  // An application of the user's own, that notifies through a helper.
  const auto program = sound_.directory() / "org-example-mailer";
  std::ofstream(program) << "#!/bin/sh\nnotify-send --wait --app-name=Mail Summary\nexit 0\n";
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  const auto entries = sound_.directory() / "data" / "applications";
  std::filesystem::create_directories(entries);
  std::ofstream(entries / "org.example.Mailer.desktop")
      << "[Desktop Entry]\nType=Application\nName=Mailer\nExec=" << program.string() << "\n";
  startDunst("exit 0");
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  const auto sender = sound_.begin({program});
  EXPECT_EQ(log.next(), presented("org.example.Mailer"));
}

TEST_F(DunstTest, OthersSoundsAreTheirOwn) {
  startDunst("exit 0");
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  const auto player = sound_.begin({"paplay", sound_.tone(200ms)});
  EXPECT_EQ(log.next(), (Heard{"audiomxd", "paplay", player->pid()}));
}

TEST_F(NotificationsTest, ASoundOfTheNamesOwnerIsANotificationSoundAsLongAsItOwnsTheName) {
  sound_.start();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  ASSERT_TRUE(log.seesNotifications());
  const auto service = sound_.begin({TEST_PLAYER, "org.freedesktop.Notifications"}, Process::Output::read);
  ASSERT_TRUE(service->line());
  ASSERT_EQ(log.heardSoFar(), Heards());
  service->signal(SIGUSR1);
  EXPECT_EQ(log.next(), (Heard{"systemsoundserverd", "NotificationCenter", service->pid()}));
  service->stop();
  const auto player = sound_.begin({TEST_PLAYER}, Process::Output::read);
  ASSERT_TRUE(player->line());
  player->signal(SIGUSR1);
  EXPECT_EQ(log.next(), (Heard{"audiomxd", "test_player", player->pid()}));
}

TEST_F(NotificationsTest, AServiceThatWasThereBeforeUsIsKnown) {
  sound_.start();
  const auto service = sound_.begin({TEST_PLAYER, "org.freedesktop.Notifications"}, Process::Output::read);
  ASSERT_TRUE(service->line());
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  ASSERT_EQ(log.heardSoFar(), Heards());
  service->signal(SIGUSR1);
  EXPECT_EQ(log.next(), (Heard{"systemsoundserverd", "NotificationCenter", service->pid()}));
}

}  // namespace
}  // namespace tollvane::test
