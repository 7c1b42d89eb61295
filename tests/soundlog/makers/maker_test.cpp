#include "soundlog/makers/maker.h"

#include <gtest/gtest.h>

#include "soundlog/notifications.h"
#include "soundlog/servers/pipewire_source.h"
#include "soundlog/servers/pulse_source.h"
#include "tests/soundlog/makers/fake_proc.h"

namespace tollvane::soundlog {
namespace {

class MakerTest : public ::testing::Test {
 protected:
  MakerTest() {
    proc_.add({.pid = 1, .parent = 0, .startTime = 0, .executable = "/sbin/init"});
    proc_.add({.pid = 100, .startTime = 10, .executable = "/opt/terminal"});
    proc_.add({.pid = 200, .parent = 100, .startTime = 20, .executable = "/opt/shell"});
    proc_.add({.pid = 300, .parent = 200, .startTime = 30, .executable = "/opt/pacat"});
  }

  Maker checked(Pid pid) const { return makers_.remember({.checkedPid = pid}); }
  Maker declared(Pid pid, std::string binary) const {
    return makers_.remember({.declaredPid = pid, .binary = std::move(binary), .name = "Some name"});
  }

  test::FakeProc proc_;
  ProcFs processes_{proc_.root()};
  Makers makers_{processes_};
};

TEST_F(MakerTest, ARunningProcessIsCreditedItself) {
  const Maker maker = checked(300);
  EXPECT_EQ(maker.name, "pacat");
  EXPECT_EQ(makers_.creditedPid(maker), 300);
}

TEST_F(MakerTest, AProcessThatEndedIsCreditedToItsParentUnderItsOwnName) {
  const Maker maker = checked(300);
  proc_.remove(300);
  EXPECT_EQ(makers_.creditedPid(maker), 200);
  EXPECT_EQ(maker.name, "pacat");
}

TEST_F(MakerTest, ParentsThatEndedTooAreSkipped) {
  const Maker maker = checked(300);
  proc_.remove(300);
  proc_.remove(200);
  EXPECT_EQ(makers_.creditedPid(maker), 100);
}

TEST_F(MakerTest, TheFirstProcessIsNeverCredited) {
  const Maker maker = checked(300);
  for (const Pid pid : {300, 200, 100}) proc_.remove(pid);
  EXPECT_EQ(makers_.creditedPid(maker), 0);
  EXPECT_FALSE(checked(1).known());
}

TEST_F(MakerTest, ANumberThatWasGivenToAnotherProcessIsNotCredited) {
  const Maker maker = checked(300);
  proc_.add({.pid = 300, .parent = 100, .startTime = 31, .executable = "/opt/bank"});
  EXPECT_EQ(makers_.creditedPid(maker), 200);
  proc_.add({.pid = 200, .parent = 1, .startTime = 32, .executable = "/opt/bank"});
  EXPECT_EQ(makers_.creditedPid(maker), 100);
}

TEST_F(MakerTest, AProcessThatHasEndedAlreadyKeepsTheNameThatItGave) {
  const Maker maker = makers_.remember({.checkedPid = 999, .binary = "/usr/bin/mpv", .name = "mpv Media Player"});
  EXPECT_FALSE(maker.known());
  EXPECT_EQ(maker.name, "mpv Media Player");
  EXPECT_EQ(makers_.creditedPid(maker), 0);
  EXPECT_EQ(makers_.remember({.checkedPid = 999, .binary = "/usr/bin/mpv"}).name, "mpv");
}

TEST_F(MakerTest, AClientInASandboxGetsTheNameOfItsApplication) {
  const Makers makers(processes_, [](std::string_view id) {
    return id == "org.mozilla.firefox" ? std::string("Firefox") : std::string();
  });
  ClientClaims claims{.declaredPid = 2, .binary = "firefox-bin", .name = "Client", .sandboxId = "org.mozilla.firefox"};
  EXPECT_EQ(makers.remember(claims).name, "Firefox");
  EXPECT_EQ(makers.creditedPid(makers.remember(claims)), 0);
  claims.sandboxId = "org.example.Unknown";
  EXPECT_EQ(makers.remember(claims).name, "Client");
}

TEST_F(MakerTest, ADeclaredProcessIsBelievedIfItsProgramAgrees) {
  EXPECT_EQ(makers_.creditedPid(declared(300, "pacat")), 300);
  EXPECT_EQ(makers_.creditedPid(declared(300, "/usr/bin/pacat")), 300);
}

TEST_F(MakerTest, ADeclaredProcessIsNotBelievedIfItsProgramDisagrees) {
  const Maker maker = declared(300, "firefox");
  EXPECT_EQ(makers_.creditedPid(maker), 0);
  EXPECT_EQ(maker.name, "Some name");
  EXPECT_EQ(makers_.creditedPid(declared(300, "")), 0) << "there is no name to compare";
  EXPECT_EQ(makers_.creditedPid(declared(1, "init")), 0) << "a sandbox numbers its processes from 1";
}

TEST_F(MakerTest, TheKernelsShortNameAgreesWithALongOne) {
  proc_.add({.pid = 400, .startTime = 40, .executable = "", .command = "a-very-long-program"});
  EXPECT_EQ(makers_.creditedPid(declared(400, "a-very-long-program")), 400);
  EXPECT_EQ(makers_.creditedPid(declared(400, "a-very-long-pro")), 400);
  EXPECT_EQ(makers_.creditedPid(declared(400, "a-very")), 0);
}

TEST_F(MakerTest, ACircleOfParentsEnds) {
  proc_.add({.pid = 500, .parent = 501, .startTime = 50, .executable = "/opt/a"});
  proc_.add({.pid = 501, .parent = 500, .startTime = 50, .executable = "/opt/b"});
  EXPECT_LE(checked(500).chain.size(), 64u);
}

TEST_F(MakerTest, TheNotificationServiceIsTheOwnerOfTheName) {
  NotificationService service(processes_, makers_);
  EXPECT_FALSE(service.plays(checked(300)));
  service.setOwner(300);
  EXPECT_TRUE(service.plays(checked(300)));
  EXPECT_FALSE(service.plays(checked(200)));
  service.setOwner(std::nullopt);
  EXPECT_FALSE(service.plays(checked(300)));
}

TEST_F(MakerTest, ALaterProcessWithTheServicesNumberIsNotTheService) {
  NotificationService service(processes_, makers_);
  service.setOwner(300);
  proc_.add({.pid = 300, .startTime = 99, .executable = "/opt/game"});
  EXPECT_FALSE(service.plays(checked(300)));
}

TEST_F(MakerTest, OtherProcessesOfTheServicesOwnUnitAreTheService) {
  const std::string unit = "/user.slice/session.slice/notifier.service";
  proc_.add({.pid = 600, .parent = 100, .startTime = 60, .executable = "/opt/notifier", .cgroup = unit});
  proc_.add({.pid = 601, .parent = 600, .startTime = 61, .executable = "/opt/player", .cgroup = unit});
  proc_.add({.pid = 602, .parent = 600, .startTime = 62, .executable = "/opt/player", .cgroup = unit + "/deeper"});
  NotificationService service(processes_, makers_);
  service.setOwner(600);
  EXPECT_TRUE(service.plays(checked(601)));
  EXPECT_FALSE(service.plays(checked(602)));
  EXPECT_FALSE(service.plays(checked(300)));
}

TEST_F(MakerTest, AUnitThatTheServiceSharesIsNotItsOwn) {
  const std::string unit = "/user.slice/dbus.service";
  proc_.add({.pid = 700, .startTime = 70, .executable = "/usr/bin/dbus-daemon", .cgroup = unit});
  proc_.add({.pid = 701, .parent = 700, .startTime = 71, .executable = "/opt/notifier", .cgroup = unit});
  proc_.add({.pid = 702, .parent = 700, .startTime = 72, .executable = "/opt/editor", .cgroup = unit});
  NotificationService service(processes_, makers_);
  service.setOwner(701);
  EXPECT_TRUE(service.plays(checked(701)));
  EXPECT_FALSE(service.plays(checked(702)));
}

TEST_F(MakerTest, AWholeSessionIsNotTheServicesUnit) {
  const std::string scope = "/user.slice/session-2.scope";
  proc_.add({.pid = 800, .parent = 100, .startTime = 80, .executable = "/opt/notifier", .cgroup = scope});
  proc_.add({.pid = 801, .parent = 100, .startTime = 81, .executable = "/opt/game", .cgroup = scope});
  NotificationService service(processes_, makers_);
  service.setOwner(800);
  EXPECT_FALSE(service.plays(checked(801)));
}

TEST_F(MakerTest, AScriptOfDunstPlaysForTheService) {
  using namespace std::string_literals;
  proc_.add({.pid = 900, .startTime = 90, .executable = "/opt/pacat", .environment = "A=1\0DUNST_APP_NAME=x\0"s});
  const NotificationService service(processes_, makers_);
  const Maker maker = checked(900);
  proc_.remove(900);
  EXPECT_TRUE(service.plays(maker));
  EXPECT_FALSE(service.plays(checked(300)));
}

Properties properties(std::map<std::string, std::string> values) {
  return [values = std::move(values)](const char* name) -> std::string_view {
    const auto found = values.find(name);
    return found == values.end() ? std::string_view() : std::string_view(found->second);
  };
}

TEST(PipeWireClaims, ANativeClientIsTheProcessThatTheKernelNames) {
  const auto claims = pipeWireClaims(properties(
      {{"pipewire.sec.pid", "42"}, {"application.process.id", "77"}, {"application.process.binary", "pw-cat"}}));
  EXPECT_EQ(claims.checkedPid, 42);
  EXPECT_EQ(claims.declaredPid, std::nullopt);
  EXPECT_EQ(claims.binary, "pw-cat");
}

TEST(PipeWireClaims, AClientOfThePulseServerIsTheProcessThatItDeclares) {
  const auto claims = pipeWireClaims(
      properties({{"client.api", "pipewire-pulse"}, {"pipewire.sec.pid", "42"}, {"application.process.id", "77"}}));
  EXPECT_EQ(claims.checkedPid, std::nullopt);
  EXPECT_EQ(claims.declaredPid, 77);
  EXPECT_EQ(claims.sandboxId, "");
}

TEST(PipeWireClaims, TheServerTellsTheSandboxOfAClient) {
  const auto claims = pipeWireClaims(properties({{"client.api", "pipewire-pulse"},
                                                 {"application.process.id", "77"},
                                                 {"pipewire.access.portal.app_id", "org.mozilla.firefox"}}));
  EXPECT_EQ(claims.sandboxId, "org.mozilla.firefox");
  EXPECT_EQ(claims.declaredPid, std::nullopt) << "the id is only valid in the sandbox";
}

TEST(PipeWireClaims, AProcessOfAnotherMachineIsIgnored) {
  const auto claims = pipeWireClaims(
      properties({{"client.api", "pipewire-pulse"}, {"pulse.server.type", "tcp"}, {"application.process.id", "77"}}));
  EXPECT_EQ(claims.declaredPid, std::nullopt);
}

TEST(PipeWireClaims, TextThatIsNoProcessIdIsIgnored) {
  for (const char* text : {"", "0", "-5", "77x", " 77", "99999999999"}) {
    EXPECT_EQ(pipeWireClaims(properties({{"pipewire.sec.pid", text}})).checkedPid, std::nullopt) << text;
    EXPECT_EQ(pulseClaims(properties({{"application.process.id", text}})).declaredPid, std::nullopt) << text;
  }
}

TEST(PulseClaims, AClientOfThisMachineIsTheProcessThatItDeclares) {
  EXPECT_EQ(pulseClaims(properties({{"application.process.id", "77"}})).declaredPid, 77);
  EXPECT_EQ(pulseClaims(properties({{"application.process.id", "77"}, {"native-protocol.peer", "TCP/IP client"}}))
                .declaredPid,
            std::nullopt);
}

}  // namespace
}  // namespace tollvane::soundlog
