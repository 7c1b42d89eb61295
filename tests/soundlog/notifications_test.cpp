// What TollvaneLog prints when real programs send notifications, over a real bus, to a real notification service.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tests/soundlog/running_log.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;
using Heards = std::vector<Heard>;

class NotificationsTest : public SharedSession<PrivateSound> {
 protected:
  using SharedSession::SharedSession;

  Heard presented(const std::string& identity) { return {"usernoted", identity, -1}; }

  PrivateSound& sound_ = session;
};

TEST_F(NotificationsTest, TheDesktopEntryIsTheIdentity) {
  sound_.startBus();
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  notify(sound_, "Mail", {"2", "urgency", "y", "1", "desktop-entry", "s", "org.example.Mail"});
  EXPECT_EQ(log.next(), presented("org.example.Mail"));
}

// Some services ring all the same, and then the sound belongs to this notification and not to the one before it.
TEST_F(NotificationsTest, ANotificationThatAsksForSilenceIsPresentedLikeAnyOther) {
  sound_.startBus();
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  notify(sound_, "Mail", {"2", "suppress-sound", "b", "false", "desktop-entry", "s", "org.example.Loud"});
  notify(sound_, "Mail", {"2", "suppress-sound", "b", "true", "desktop-entry", "s", "org.example.Quiet"});
  EXPECT_EQ(log.next(), presented("org.example.Loud"));
  EXPECT_EQ(log.next(), presented("org.example.Quiet"));
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

TEST_F(NotificationsTest, AnIdentityCannotFakeALine) {
  sound_.startBus();
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  notify(sound_, "", {"1", "desktop-entry", "s", "a\"\n{\"processImagePath\":\"x\"}"});
  EXPECT_EQ(log.next(), presented("a' {'processImagePath':'x'}"));
}

// The notification service is dunst, which needs a screen.
class DunstTest : public NotificationsTest {
 protected:
  DunstTest() : NotificationsTest(std::vector<std::string>{"--screen", "640x480"}) { sound_.start(); }
  void TearDown() override { sound_.tell("stop notifications"); }

  // Each notification runs `script`, which finds a sound file in $TONE.
  void startDunst(const std::string& script) {
    const auto file = sound_.home() / "on-notification";
    std::ofstream(file) << "#!/bin/sh\nTONE='" << sound_.tone(200ms).string() << "'\n" << script << '\n';
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    sound_.tell("start notifications " + file.string());
  }
};

TEST_F(DunstTest, TheSoundOfItsScriptIsANotificationSound) {
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

// Reads until `count` sounds of notifications were heard, and returns the application that each is credited to: the one
// presented last before it.
std::vector<std::string> credited(RunningLog& log, std::size_t count) {
  std::vector<std::string> applications;
  std::string last;
  while (applications.size() < count) {
    const auto heard = log.next();
    if (!heard) break;
    if (heard->speaker == "usernoted") last = heard->name;
    if (heard->name == "NotificationCenter") applications.push_back(last);
  }
  return applications;
}

TEST_F(DunstTest, EachOfTwoNotificationsInAMomentHasItsOwnSound) {
  startDunst("sleep 0.3\nexec pw-play \"$TONE\"");
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  ASSERT_TRUE(sound_.play({"sh", "-c", "notify-send -a Alpha One; sleep 0.05; notify-send -a Beta Two"}));
  EXPECT_THAT(credited(log, 2), ::testing::UnorderedElementsAre("Alpha", "Beta"));
}

TEST_F(DunstTest, AScriptsSoundBelongsToTheApplicationOfItsNotificationWhateverThatCallsItself) {
  startDunst("[ \"$DUNST_APP_NAME\" != Mail ] || sleep 0.3\nexec pw-play \"$TONE\"");
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  ASSERT_TRUE(sound_.play({"notify-send", "-a", "Mail", "-h", "string:desktop-entry:org.example.Mail", "One"}));
  ASSERT_TRUE(sound_.play({"notify-send", "-a", "Chat", "Two"}));
  EXPECT_EQ(credited(log, 2), (std::vector<std::string>{"Chat", "org.example.Mail"}));
}

// The sender waits until its notification is closed, because applications outlive their notifications.
TEST_F(DunstTest, WithoutAnEntryTheSenderIsNamedByItself) {
  startDunst("exit 0");
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  const auto sender = sound_.begin({"notify-send", "--wait", "--app-name=Anything", "Summary"});
  EXPECT_EQ(log.next(), presented("Anything"));
}

TEST_F(DunstTest, WithoutAnEntryTheSendersApplicationIsTheIdentity) {
  // An application that the user has installed, which sends notifications through a helper program.
  const auto program = sound_.home() / "org-example-mailer";
  std::ofstream(program) << "#!/bin/sh\nnotify-send --wait --app-name=Mail Summary\nexit 0\n";
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  const auto entries = sound_.home() / ".local/share/applications";
  std::filesystem::create_directories(entries);
  std::ofstream(entries / "org.example.Mailer.desktop")
      << "[Desktop Entry]\nType=Application\nName=Mailer\nExec=" << program.string() << "\n";
  startDunst("exit 0");
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  const auto sender = sound_.begin({program});
  EXPECT_EQ(log.next(), presented("org.example.Mailer"));
}

TEST_F(DunstTest, SoundsOfOtherProgramsAreNotNotificationSounds) {
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

// As in GNOME, where a helper owns the service's name, and the shell plays.
TEST_F(NotificationsTest, AReceiverToWhichTheServicePassesNotificationsOnPlaysForTheirSenders) {
  sound_.start();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  ASSERT_TRUE(log.seesNotifications());
  const auto shell = sound_.begin({TEST_PLAYER, "org.example.Shell"}, Process::Output::read);
  ASSERT_TRUE(shell->line());
  const auto helper =
      sound_.begin({TEST_FORWARDER, "org.freedesktop.Notifications", "org.example.Shell"}, Process::Output::read);
  ASSERT_TRUE(helper->line());
  ASSERT_TRUE(sound_.play({"notify-send", "-a", "Mailer", "-h", "string:sound-name:message-new-instant", "Summary"}));
  EXPECT_EQ(log.next(), presented("Mailer"));
  EXPECT_EQ(log.next(), (Heard{"systemsoundserverd", "NotificationCenter", shell->pid()}));
  EXPECT_EQ(log.heardSoFar(), Heards()) << "what is passed on is no other notification";
}

TEST_F(NotificationsTest, AServiceThatStartedBeforeTheLogIsKnown) {
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
