#include "soundlog/makers/identity.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/soundlog/makers/fake_proc.h"

namespace tollvane::soundlog {
namespace {

class IdentityTest : public ::testing::Test {
 protected:
  IdentityTest() {
    proc_.add({.pid = 100, .startTime = 1, .executable = "/opt/terminal"});
    proc_.add({.pid = 200, .parent = 100, .startTime = 2, .executable = "/opt/shell"});
    proc_.add({.pid = 300, .parent = 200, .startTime = 3, .executable = "/opt/notify-send"});
    proc_.add({.pid = 400, .startTime = 4, .executable = "/opt/mailer"});
    proc_.add({.pid = 500, .parent = 400, .startTime = 5, .executable = "/opt/helper"});
    proc_.add({.pid = 600, .startTime = 6, .executable = "/usr/libexec/xdg-desktop-portal-gtk"});
    applications_[400] = {"org.example.Mailer", true};
    applications_[600] = {"xdg-desktop-portal-gtk", false};
  }

  std::string identify(const Notice& notice, std::optional<Pid> sender) const {
    const Identities identities(makers_, [this](Pid pid) -> std::optional<Identities::Application> {
      const auto found = applications_.find(pid);
      if (found == applications_.end()) return std::nullopt;
      return found->second;
    });
    return identities.identify(notice, sender);
  }

  test::FakeProc proc_;
  ProcFs processes_{proc_.root()};
  Makers makers_{processes_};
  std::map<Pid, Identities::Application> applications_;
};

TEST_F(IdentityTest, TheNotificationsOwnIdentityComesFirst) {
  EXPECT_EQ(identify({.applicationName = "Mail", .desktopEntry = "org.other.App"}, 400), "org.other.App");
  EXPECT_EQ(identify({.desktopEntry = "org.other.App.desktop"}, 400), "org.other.App");
  EXPECT_EQ(identify({.desktopEntry = "/usr/share/applications/other.desktop"}, 400), "other");
}

TEST_F(IdentityTest, TheSendersApplicationComesNext) {
  EXPECT_EQ(identify({.applicationName = "Mail"}, 400), "org.example.Mailer");
}

TEST_F(IdentityTest, AHelpersNotificationIsCreditedToItsApplication) {
  EXPECT_EQ(identify({.applicationName = "Mail"}, 500), "org.example.Mailer");
}

TEST_F(IdentityTest, AnAncestorThatTheUserDoesNotKnowIsNoApplication) {
  applications_[200] = {"shell", false};
  applications_[100] = {"org.example.Terminal", true};
  EXPECT_EQ(identify({}, 300), "org.example.Terminal");
}

TEST_F(IdentityTest, ASenderThatTheUserDoesNotKnowIsStillIdentified) {
  applications_[400] = {"org.example.Daemon", false};
  EXPECT_EQ(identify({}, 400), "org.example.Daemon");
}

TEST_F(IdentityTest, ASenderWithoutAnApplicationIsNamedByItselfElseByItsProgram) {
  EXPECT_EQ(identify({.applicationName = "Backup"}, 300), "Backup");
  EXPECT_EQ(identify({}, 300), "notify-send");
}

TEST_F(IdentityTest, ASenderThatEndsMeanwhileKeepsItsNameAndItsAncestors) {
  applications_[100] = {"org.example.Terminal", true};
  const Identities identities(makers_, [this](Pid pid) -> std::optional<Identities::Application> {
    proc_.remove(300);
    const auto found = applications_.find(pid);
    return found == applications_.end() ? std::nullopt : std::make_optional(found->second);
  });
  EXPECT_EQ(identities.identify({}, 300), "org.example.Terminal");
  applications_.erase(100);
  proc_.add({.pid = 300, .parent = 200, .startTime = 3, .executable = "/opt/notify-send"});
  EXPECT_EQ(identities.identify({}, 300), "notify-send");
}

TEST_F(IdentityTest, TheDeclaredSenderCountsIfTheBusKnowsNone) {
  EXPECT_EQ(identify({.applicationName = "Mail", .declaredSender = 400}, std::nullopt), "org.example.Mailer");
  EXPECT_EQ(identify({.applicationName = "Mail", .declaredSender = 400}, 300), "org.example.Mailer");
}

TEST_F(IdentityTest, TheSenderThatTheBusKnowsIsPreferredToTheDeclaredOne) {
  applications_[300] = {"org.example.Sender", true};
  EXPECT_EQ(identify({.declaredSender = 400}, 300), "org.example.Sender");
}

TEST_F(IdentityTest, APortalIsNotTheApplication) {
  EXPECT_EQ(identify({.applicationName = "Mail", .declaredSender = 400}, 600), "Mail");
}

TEST_F(IdentityTest, WithoutAnySenderTheNameIsTheIdentity) {
  EXPECT_EQ(identify({.applicationName = "Mail"}, std::nullopt), "Mail");
  EXPECT_EQ(identify({.applicationName = "Mail"}, 999), "Mail") << "the sender has ended";
}

}  // namespace
}  // namespace tollvane::soundlog
