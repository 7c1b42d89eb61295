#include "soundlog/makers/maker.h"

#include <gtest/gtest.h>

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

  Pid credited(const Maker& maker) const {
    const auto alive = makers_.stillRunning(maker);
    return alive.empty() ? 0 : alive.front();
  }
  std::string scriptOf(Pid pid) const { return checked(pid).script; }

  test::FakeProc proc_;
  ProcFs processes_{proc_.root()};
  Makers makers_{processes_};
};

TEST_F(MakerTest, ARunningProcessIsCreditedItself) {
  const Maker maker = checked(300);
  EXPECT_EQ(maker.name, "pacat");
  EXPECT_EQ(credited(maker), 300);
}

TEST_F(MakerTest, AProcessThatEndedIsCreditedToItsParentUnderItsOwnName) {
  const Maker maker = checked(300);
  proc_.remove(300);
  EXPECT_EQ(credited(maker), 200);
  EXPECT_EQ(maker.name, "pacat");
}

TEST_F(MakerTest, ParentsThatEndedTooAreSkipped) {
  const Maker maker = checked(300);
  proc_.remove(300);
  proc_.remove(200);
  EXPECT_EQ(credited(maker), 100);
}

TEST_F(MakerTest, TheFirstProcessIsNeverCredited) {
  const Maker maker = checked(300);
  for (const Pid pid : {300, 200, 100}) proc_.remove(pid);
  EXPECT_EQ(credited(maker), 0);
  EXPECT_FALSE(checked(1).known());
}

TEST_F(MakerTest, ANumberThatWasGivenToAnotherProcessIsNotCredited) {
  const Maker maker = checked(300);
  proc_.add({.pid = 300, .parent = 100, .startTime = 31, .executable = "/opt/bank"});
  EXPECT_EQ(credited(maker), 200);
  proc_.add({.pid = 200, .parent = 1, .startTime = 32, .executable = "/opt/bank"});
  EXPECT_EQ(credited(maker), 100);
}

TEST_F(MakerTest, AProcessThatHasEndedAlreadyKeepsTheNameThatItGave) {
  const Maker maker = makers_.remember({.checkedPid = 999, .binary = "/usr/bin/mpv", .name = "mpv Media Player"});
  EXPECT_FALSE(maker.known());
  EXPECT_EQ(maker.name, "mpv Media Player");
  EXPECT_EQ(credited(maker), 0);
  EXPECT_EQ(makers_.remember({.checkedPid = 999, .binary = "/usr/bin/mpv"}).name, "mpv");
}

TEST_F(MakerTest, AClientInASandboxGetsTheNameOfItsApplication) {
  const Makers makers(processes_, [](std::string_view id) {
    return id == "org.mozilla.firefox" ? std::string("Firefox") : std::string();
  });
  ClientClaims claims{.declaredPid = 2, .binary = "firefox-bin", .name = "Client", .sandboxId = "org.mozilla.firefox"};
  EXPECT_EQ(makers.remember(claims).name, "Firefox");
  EXPECT_EQ(makers.stillRunning(makers.remember(claims)).size(), 0);
  claims.sandboxId = "org.example.Unknown";
  EXPECT_EQ(makers.remember(claims).name, "Client");
}

TEST_F(MakerTest, ADeclaredProcessIsBelievedIfItsProgramAgrees) {
  EXPECT_EQ(credited(declared(300, "pacat")), 300);
  EXPECT_EQ(credited(declared(300, "/usr/bin/pacat")), 300);
}

TEST_F(MakerTest, ADeclaredProcessIsNotBelievedIfItsProgramDisagrees) {
  const Maker maker = declared(300, "firefox");
  EXPECT_EQ(credited(maker), 0);
  EXPECT_EQ(maker.name, "Some name");
  EXPECT_EQ(credited(declared(300, "")), 0) << "there is no name to compare";
  EXPECT_EQ(credited(declared(1, "init")), 0) << "a sandbox numbers its processes from 1";
}

TEST_F(MakerTest, TheKernelsShortNameAgreesWithALongOne) {
  proc_.add({.pid = 400, .startTime = 40, .executable = "", .command = "a-very-long-program"});
  EXPECT_EQ(credited(declared(400, "a-very-long-program")), 400);
  EXPECT_EQ(credited(declared(400, "a-very-long-pro")), 400);
  EXPECT_EQ(credited(declared(400, "a-very")), 0);
}

TEST_F(MakerTest, ACircleOfParentsEnds) {
  proc_.add({.pid = 500, .parent = 501, .startTime = 50, .executable = "/opt/a"});
  proc_.add({.pid = 501, .parent = 500, .startTime = 50, .executable = "/opt/b"});
  EXPECT_LE(checked(500).chain.size(), 64u);
}

TEST_F(MakerTest, AncestorsThatRunAreListedWithTheNearestFirst) {
  const Maker maker = checked(300);
  EXPECT_EQ(makers_.stillRunning(maker), (std::vector<Pid>{300, 200, 100}));
  proc_.remove(200);
  EXPECT_EQ(makers_.stillRunning(maker), (std::vector<Pid>{300, 100}));
}

TEST_F(MakerTest, AToolIsStartedByTheScriptOfItsParent) {
  proc_.add(
      {.pid = 500, .startTime = 50, .executable = "/bin/bash", .arguments = {"-e", "/home/me/backup-done.sh", "x"}});
  proc_.add({.pid = 501, .parent = 500, .startTime = 51, .executable = "/usr/bin/pacat"});
  EXPECT_EQ(scriptOf(501), "backup-done.sh");
  EXPECT_EQ(scriptOf(500), "") << "the script itself";
  EXPECT_EQ(scriptOf(300), "");
  const Maker maker = checked(501);
  proc_.remove(501);
  proc_.remove(500);
  EXPECT_EQ(maker.script, "backup-done.sh") << "it stays known";
}

TEST_F(MakerTest, WhatOnlyWaitsForTheToolIsNotInTheWay) {
  proc_.add({.pid = 500, .startTime = 50, .executable = "/usr/bin/python3.11", .arguments = {"/home/me/ding.py"}});
  proc_.add({.pid = 501, .parent = 500, .startTime = 51, .executable = "/usr/bin/timeout", .arguments = {"5", "sh"}});
  proc_.add(
      {.pid = 502, .parent = 501, .startTime = 52, .executable = "/bin/sh", .arguments = {"-c", "pacat x; exit"}});
  proc_.add({.pid = 503, .parent = 502, .startTime = 53, .command = "sudo"});
  proc_.add({.pid = 504, .parent = 503, .startTime = 54, .executable = "/usr/bin/pacat"});
  EXPECT_EQ(scriptOf(504), "ding.py");
}

TEST_F(MakerTest, AnotherProgramOrAPersonInBetweenIsWhoStartedTheTool) {
  proc_.add({.pid = 500, .startTime = 50, .executable = "/bin/sh", .arguments = {"/home/me/work.sh"}});
  proc_.add({.pid = 501, .parent = 500, .startTime = 51, .executable = "/opt/editor"});
  proc_.add({.pid = 502, .parent = 501, .startTime = 52, .executable = "/usr/bin/pacat"});
  EXPECT_EQ(scriptOf(502), "");
  proc_.add({.pid = 501, .parent = 500, .startTime = 51, .executable = "/bin/bash", .arguments = {"-i"}});
  EXPECT_EQ(scriptOf(502), "") << "a shell that takes commands from a person";
}

TEST_F(MakerTest, AScriptThatStartsTheSessionIsNotTheReasonForASound) {
  proc_.add({.pid = 500, .startTime = 50, .executable = "/bin/sh", .arguments = {"/etc/X11/Xsession"}});
  proc_.add({.pid = 501, .parent = 500, .startTime = 51, .executable = "/usr/bin/pacat"});
  EXPECT_EQ(scriptOf(501), "");
}

TEST_F(MakerTest, TheSpeechServiceItsModulesAndTheirPlayersSpeak) {
  const std::string modules = "/usr/lib/speech-dispatcher-modules/";
  proc_.add({.pid = 400, .startTime = 40, .executable = "/usr/bin/speech-dispatcher"});
  proc_.add({.pid = 401, .parent = 400, .startTime = 41, .executable = modules + "sd_espeak-ng"});
  proc_.add({.pid = 402, .parent = 401, .startTime = 42, .executable = "/usr/bin/sox"});
  proc_.add({.pid = 403, .parent = 1, .startTime = 43, .executable = modules + "sd_flite"});
  proc_.add({.pid = 404, .parent = 400, .startTime = 44, .executable = modules + "sd_dummy"});
  proc_.add({.pid = 405, .parent = 404, .startTime = 45, .executable = "/usr/bin/sox"});
  proc_.add({.pid = 406, .startTime = 46, .executable = "/opt/sd_dummy"});
  for (const Pid pid : {400, 401, 402, 403, 405}) EXPECT_EQ(checked(pid).speech, Speech::speaker) << pid;
  EXPECT_EQ(checked(404).speech, Speech::mute);
  EXPECT_EQ(checked(406).speech, Speech::none);
  EXPECT_EQ(checked(300).speech, Speech::none);
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
