// TollvaneLog with a PulseAudio server, and what it does when PipeWire is started.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <vector>

#include "tests/soundlog/running_log.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;
using Heards = std::vector<Heard>;

// Uses the PulseAudio server, which tests/session/software unpacks into the build folder, because its package conflicts
// with PipeWire's.
class PulseAudioTest : public SharedSession<PrivateSound> {
 protected:
  PulseAudioTest() : SharedSession(std::vector<std::string>{"--pulseaudio", PULSEAUDIO}) {}

  void SetUp() override {
    if (!std::filesystem::exists(std::filesystem::path(PULSEAUDIO) / "usr/bin/pulseaudio"))
      GTEST_SKIP() << "There is no PulseAudio server in " PULSEAUDIO "; './dev test sound' puts it there.";
    sound_.startBus();
  }
  void TearDown() override { sound_.stopPipeWire(); }

  PrivateSound& sound_ = session;
};

TEST_F(PulseAudioTest, PlayersAreHeardOnceUnderTheirOwnNameAndNumber) {
  sound_.startPulseAudio();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  const auto player = sound_.begin({"paplay", sound_.tone(200ms)});
  EXPECT_EQ(log.next(), (Heard{"audiomxd", "paplay", player->pid()}));
  EXPECT_EQ(player->exitCode(), 0);
  EXPECT_EQ(log.heardSoFar(), Heards());
}

TEST_F(PulseAudioTest, AStreamWithASignalsRoleIsAnAlert) {
  sound_.startPulseAudio();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  const auto player = sound_.begin({"paplay", "--property=media.role=event", sound_.tone(50ms)});
  EXPECT_EQ(log.next(), (Heard{"systemsoundserverd", "paplay", player->pid()}));
}

TEST_F(PulseAudioTest, AStreamThatWaitsIsHeardWhenItPlays) {
  sound_.startPulseAudio();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  const auto player = sound_.begin({TEST_PLAYER}, Process::Output::read);
  ASSERT_TRUE(player->line());
  EXPECT_EQ(log.heardSoFar(), Heards());
  player->signal(SIGUSR1);
  EXPECT_EQ(log.next(), (Heard{"audiomxd", "test_player", player->pid()}));
}

TEST_F(PulseAudioTest, AStreamThatPlaysAlreadyIsNotHeardButTheNextOneIs) {
  sound_.startPulseAudio();
  const auto early = sound_.begin({TEST_PLAYER}, Process::Output::read);
  ASSERT_TRUE(early->line());
  early->signal(SIGUSR1);
  ASSERT_TRUE(waitUntil([this] {
    const auto list = sound_.begin({"pactl", "list", "sink-inputs"}, Process::Output::read);
    return list->rest().find("Corked: no") != std::string::npos;
  }));
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  EXPECT_EQ(log.heardSoFar(), Heards());
}

TEST_F(PulseAudioTest, ARelayIsNotHeard) {
  sound_.startPulseAudio();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  ASSERT_TRUE(sound_.play({"pactl", "load-module", "module-loopback"}));
  EXPECT_EQ(log.heardSoFar(), Heards());
}

TEST_F(PulseAudioTest, AServerThatCrashesAndComesBackIsHeardAgain) {
  sound_.startPulseAudio();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  sound_.killPulseAudio();
  sound_.startPulseAudio();
  EXPECT_TRUE(log.listens());
}

TEST_F(PulseAudioTest, AServerThatIsStartedLaterIsHeard) {
  RunningLog log(sound_);
  sound_.startPulseAudio();
  EXPECT_TRUE(log.listens());
}

TEST_F(PulseAudioTest, WhenPipeWireIsStartedItIsHeardInstead) {
  sound_.startPulseAudio();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  sound_.killPulseAudio();
  sound_.startPipeWire();
  ASSERT_TRUE(log.listens());
  log.heardSoFar();  // skips what was played to find out whether the server is ready
  const auto native = sound_.begin({"pw-play", sound_.tone(200ms)});
  EXPECT_EQ(log.next(), (Heard{"audiomxd", "pw-play", native->pid()}));
  EXPECT_EQ(log.heardSoFar(), Heards()) << "nothing is heard twice";
}

// A PipeWire that plays no sound: the server alone, as it is where it only serves cameras and screens.
class PipeWireForVideoTest : public PulseAudioTest {
 protected:
  void startPipeWire() {
    pipeWire_ = sound_.begin({"pipewire"});
    ASSERT_TRUE(waitUntil([this] { return sound_.play({"pw-cli", "info", "0"}); }));
  }
  void hearsAPlayerOnce(RunningLog& log) {
    ASSERT_TRUE(log.listens());
    log.heardSoFar();
    const auto player = sound_.begin({"paplay", sound_.tone(200ms)});
    EXPECT_EQ(log.next(), (Heard{"audiomxd", "paplay", player->pid()}));
    EXPECT_EQ(log.heardSoFar(), Heards());
  }

  std::unique_ptr<Process> pipeWire_;
};

TEST_F(PipeWireForVideoTest, PulseAudioIsHeardBesideIt) {
  startPipeWire();
  sound_.startPulseAudio();
  RunningLog log(sound_);
  hearsAPlayerOnce(log);
}

TEST_F(PipeWireForVideoTest, PulseAudioThatComesLaterIsHeard) {
  startPipeWire();
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  sound_.startPulseAudio();
  hearsAPlayerOnce(log);
}

TEST_F(PipeWireForVideoTest, PulseAudioIsHeardOnWhenItComesAndWhenItGoes) {
  sound_.startPulseAudio();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  startPipeWire();
  hearsAPlayerOnce(log);
  pipeWire_->stop();
  hearsAPlayerOnce(log);
}

// PipeWire runs, but only its PulseAudio server can be reached.
TEST(PulseSideTest, SoundsAreHeardThroughItIfOnlyItCanBeReached) {
  PrivateSound sound;
  sound.start();
  PrivateSound outside;
  outside.setVariable("PULSE_SERVER", "unix:" + (sound.runtimeDirectory() / "pulse/native").string());
  RunningLog log(outside);
  ASSERT_TRUE(log.listens());
  const auto player = outside.begin({"paplay", outside.tone(200ms)});
  EXPECT_EQ(log.next(), (Heard{"audiomxd", "paplay", player->pid()}));
}

}  // namespace
}  // namespace tollvane::test
