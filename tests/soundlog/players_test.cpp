// What TollvaneLog prints when real players play on a real PipeWire.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/soundlog/running_log.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;
using Heards = std::vector<Heard>;

class PlayersTest : public SharedSession<PrivateSound> {
 protected:
  void SetUp() override {
    sound_.start();
    log_ = std::make_unique<RunningLog>(sound_);
    ASSERT_TRUE(log_->listens());
  }

  // Runs a player to its end and returns its process id.
  int play(const std::vector<std::string>& command) {
    const auto player = sound_.begin(command);
    EXPECT_EQ(player->exitCode(), 0) << command.front();
    return player->pid();
  }

  void nothingIsHeardFor(std::chrono::milliseconds length) {
    const auto end = std::chrono::steady_clock::now() + length;
    while (std::chrono::steady_clock::now() < end) EXPECT_EQ(log_->heardSoFar(), Heards());
  }

  std::string tone(std::chrono::milliseconds length = 200ms) { return sound_.tone(length); }

  // Whether the server says that a test player's stream is paused, or that one plays.
  bool pauses() { return streamsSay("Corked: yes"); }
  bool plays() { return streamsSay("Corked: no"); }
  bool streamsSay(const std::string& text) {
    const auto list = sound_.begin({"pactl", "list", "sink-inputs"}, Process::Output::read);
    return list->rest().find(text) != std::string::npos;
  }

  // Whether PipeWire says that the node of this name is running.
  bool runs(const std::string& node) {
    const auto dump = sound_.begin({"pw-cli", "info", node}, Process::Output::read);
    return dump->rest().find("state: \"running\"") != std::string::npos;
  }

  PrivateSound& sound_ = session;
  std::unique_ptr<RunningLog> log_;
};

TEST_F(PlayersTest, EachPlayerIsHeardOnceUnderItsOwnNameAndNumber) {
  const int native = play({"pw-play", tone()});
  const int pulse = play({"paplay", tone()});
  const int alsa = play({"aplay", "-q", "-D", "pipewire", tone()});
  EXPECT_EQ(log_->heardSoFar(),
            (Heards{{"audiomxd", "pw-play", native}, {"audiomxd", "paplay", pulse}, {"audiomxd", "aplay", alsa}}));
}

TEST_F(PlayersTest, SoxIsHeardOnce) {
  sound_.setVariable("AUDIODRIVER", "pulseaudio");
  const int sox = play({"play", "-q", tone()});
  EXPECT_EQ(log_->heardSoFar(), (Heards{{"audiomxd", "play", sox}}));
}

TEST_F(PlayersTest, AVeryShortSoundIsHeard) {
  const int player = play({"pw-play", tone(10ms)});
  EXPECT_EQ(log_->heardSoFar(), (Heards{{"audiomxd", "pw-play", player}}));
}

TEST_F(PlayersTest, TwentySoundsAtOnceAreAllHeard) {
  std::vector<std::unique_ptr<Process>> players;
  for (int i = 0; i < 20; ++i) players.push_back(sound_.begin({"pw-play", tone(10ms)}));
  std::set<int> expected, heard;
  for (const auto& player : players) expected.insert(player->pid());
  for (std::size_t i = 0; i < players.size(); ++i) {
    const auto next = log_->next();
    ASSERT_TRUE(next);
    heard.insert(next->pid);
  }
  EXPECT_EQ(heard, expected);
}

TEST_F(PlayersTest, AStreamWithASignalsRoleIsAnAlert) {
  const int event = play({"paplay", "--property=media.role=event", tone()});
  const int role = play({"pw-play", "--media-role", "Notification", tone()});
  const int named = play({"paplay", "--property=event.id=bell", tone()});
  EXPECT_EQ(log_->heardSoFar(), (Heards{{"systemsoundserverd", "paplay", event},
                                        {"systemsoundserverd", "pw-play", role},
                                        {"systemsoundserverd", "paplay", named}}));
}

TEST_F(PlayersTest, ARelayIsNotHeard) {
  const auto relay = sound_.begin({"pw-loopback", "--name", "relay"});
  ASSERT_TRUE(waitUntil([this] { return runs("output.relay"); }));
  EXPECT_EQ(log_->heardSoFar(), Heards());
}

TEST_F(PlayersTest, AStreamThatRunsAlreadyIsNotHeardButTheNextOneIs) {
  const auto early = sound_.begin({"pw-play", "-P", "{ node.name = early }", tone(8000ms)});
  ASSERT_TRUE(waitUntil([this] { return runs("early"); }));
  RunningLog late(sound_);
  ASSERT_TRUE(late.listens());
  const int player = play({"pw-play", tone()});
  EXPECT_EQ(late.heardSoFar(), (Heards{{"audiomxd", "pw-play", player}}));
}

TEST_F(PlayersTest, AStreamThatWaitsIsHeardWhenItPlays) {
  const auto player = sound_.begin({TEST_PLAYER}, Process::Output::read);
  ASSERT_TRUE(player->line());
  EXPECT_EQ(log_->heardSoFar(), Heards());
  player->signal(SIGUSR1);
  EXPECT_EQ(log_->next(), (Heard{"audiomxd", "test_player", player->pid()}));
}

TEST_F(PlayersTest, TwoStreamsThatAProcessStartsTogetherAreHeardOnce) {
  const auto player = sound_.begin({TEST_PLAYER, "two-streams"}, Process::Output::read);
  ASSERT_TRUE(player->line());
  player->signal(SIGUSR1);
  EXPECT_EQ(log_->next(), (Heard{"audiomxd", "test_player", player->pid()}));
  EXPECT_EQ(log_->heardSoFar(), Heards());
}

TEST_F(PlayersTest, AStreamThatPlaysOnAfterALongPauseIsHeardAgain) {
  const auto player = sound_.begin({TEST_PLAYER}, Process::Output::read);
  ASSERT_TRUE(player->line());
  for (int round = 0; round < 2; ++round) {
    player->signal(SIGUSR1);
    EXPECT_EQ(log_->next(), (Heard{"audiomxd", "test_player", player->pid()}));
    player->signal(SIGUSR2);
    ASSERT_TRUE(waitUntil([this] { return pauses(); }));
    // The pause counts from when the log knows of it. 400 ms, measured here, are longer than the shortest pause.
    const auto pause = std::chrono::steady_clock::now() + 400ms;
    while (std::chrono::steady_clock::now() < pause) EXPECT_EQ(log_->heardSoFar(), Heards());
  }
}

TEST_F(PlayersTest, AProcessThatEndedIsCreditedToItsParent) {
  const auto shell = sound_.begin({"sh", "-c", "\"$0\"; exec sleep 100", TEST_PLAYER}, Process::Output::read);
  const auto ready = shell->line();
  ASSERT_TRUE(ready);
  const int player = std::stoi(ready->substr(ready->find(' ')));
  ASSERT_EQ(log_->heardSoFar(), Heards()) << "the log now knows the stream, which waits";

  // Stop the log until the player has played and has ended.
  log_->process().signal(SIGSTOP);
  kill(player, SIGUSR1);
  ASSERT_TRUE(waitUntil([this] { return runs("test_player_stream"); }));
  kill(player, SIGTERM);
  ASSERT_TRUE(waitUntil([player] { return kill(player, 0) != 0; }));
  log_->process().signal(SIGCONT);
  EXPECT_EQ(log_->next(), (Heard{"audiomxd", "test_player", shell->pid()}));
}

TEST_F(PlayersTest, AToolThatAScriptStartsIsNamedWithTheScript) {
  const auto script = sound_.home() / "backup-done.sh";
  std::ofstream(script) << "#!/bin/sh\npaplay \"$1\"\n"
                        << "timeout 9 sh -c \"paplay --property=media.role=event '$1'; exit 0\"\n";
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  const auto shell = sound_.begin({script, tone()});
  const auto sound = log_->next();
  ASSERT_TRUE(sound);
  EXPECT_EQ(sound->name, "paplay (backup-done.sh)");
  EXPECT_THAT(sound->ancestors, ::testing::Contains(shell->pid()));
  const auto alert = log_->next();
  ASSERT_TRUE(alert);
  EXPECT_EQ(alert->speaker, "systemsoundserverd");
  EXPECT_EQ(alert->name, "paplay (backup-done.sh)");
  EXPECT_THAT(alert->ancestors, ::testing::Contains(shell->pid()));
}

TEST_F(PlayersTest, AJackClientIsHeardWhenItIsConnectedToAnOutput) {
  if (run({"sh", "-c", "command -v pw-jack"}, sound_.variables()) != 0)
    GTEST_SKIP() << "pw-jack is not here; './dev test sound' unpacks it.";
  const auto player = sound_.begin({"pw-jack", TEST_JACK_PLAYER}, Process::Output::read);
  const auto ready = player->line();
  ASSERT_TRUE(ready);
  const int pid = std::stoi(ready->substr(ready->find(' ')));
  EXPECT_EQ(log_->heardSoFar(), Heards()) << "it runs, but nobody can hear it";
  const Heard heard{"audiomxd", "test_jack_player", pid};
  kill(pid, SIGUSR1);
  EXPECT_EQ(log_->next(), heard);
  EXPECT_EQ(log_->heardSoFar(), Heards());
  kill(pid, SIGUSR2);
  nothingIsHeardFor(400ms);
  kill(pid, SIGUSR1);
  EXPECT_EQ(log_->next(), heard);
  kill(pid, SIGTERM);
}

// A speech service as speech-dispatcher is made: a server that starts a module for each way to speak. All of them try
// the sound server when they start, and a sentence comes from one of them, or from the server itself.
class SpeechTest : public PlayersTest {
 protected:
  void SetUp() override {
    PlayersTest::SetUp();
    const auto folder = sound_.home() / "speech-dispatcher-modules";
    std::filesystem::create_directories(folder);
    for (const std::string name : {"sd_espeak-ng", "sd_generic", "sd_dummy"})
      std::filesystem::copy_file(TEST_PLAYER, folder / name, std::filesystem::copy_options::overwrite_existing);
    const auto server = sound_.home() / "speech-dispatcher";
    std::filesystem::copy_file("/bin/sh", server, std::filesystem::copy_options::overwrite_existing);
    // The shell tells who each module is, and waits for them.
    server_ =
        sound_.begin({server, "-c", "for each in espeak-ng generic dummy; do \"$0/sd_$each\" & done; wait", folder},
                     Process::Output::read);
    for (int i = 0; i < 3; ++i) {
      const auto ready = server_->line();
      ASSERT_TRUE(ready);
      modules_.push_back(std::stoi(ready->substr(ready->find(' '))));
    }
  }
  void TearDown() override {
    for (const int module : modules_) kill(module, SIGTERM);
  }

  // The module whose program has this name.
  int module(const std::string& name) const {
    const auto found = std::find_if(modules_.begin(), modules_.end(), [&](int pid) {
      return std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe").filename() == name;
    });
    return found == modules_.end() ? 0 : *found;
  }

  std::unique_ptr<Process> server_;
  std::vector<int> modules_;
  const Heard speech_{"audiomxd", "Speech", 0};
};

TEST_F(SpeechTest, ASentenceIsOneEntryHoweverManyModulesTakePart) {
  kill(module("sd_espeak-ng"), SIGUSR1);
  EXPECT_EQ(log_->next(), speech_);
  nothingIsHeardFor(400ms);
  kill(module("sd_generic"), SIGUSR1);
  nothingIsHeardFor(500ms);
}

TEST_F(SpeechTest, AModuleThatOnlyTriesTheSoundServerIsNotHeard) {
  const int espeak = module("sd_espeak-ng");
  const int dummy = module("sd_dummy");
  // The log is held up until the trial is over, so that it takes no time for the log.
  log_->process().signal(SIGSTOP);
  kill(espeak, SIGUSR1);
  ASSERT_TRUE(waitUntil([this] { return plays(); }));
  kill(espeak, SIGTERM);
  ASSERT_TRUE(waitUntil([this] { return !plays(); }));
  log_->process().signal(SIGCONT);
  kill(dummy, SIGUSR1);  // this one keeps a stream open, and has a player for the only sentence it knows
  nothingIsHeardFor(500ms);
}

TEST_F(PlayersTest, AProgramThatNamesAnotherProcessIsNotCreditedToIt) {
  play({"paplay", "--property=application.process.id=" + std::to_string(log_->process().pid()), tone()});
  EXPECT_EQ(log_->heardSoFar(), (Heards{{"audiomxd", "paplay", 0}}));
}

TEST_F(PlayersTest, AProgramsNameCannotFakeALine) {
  play({"paplay", "--property=application.process.id=1",
        "--property=application.name=evil(7)\",\n\"output_running\":true} {\"name\":\"bank(7)\"", tone()});
  EXPECT_EQ(log_->heardSoFar(), (Heards{{"audiomxd", "evil[7]', 'output_running':true} {'name':'bank[7]'", 0}}));
}

TEST_F(PlayersTest, AProcessOfAnotherIdNamespaceIsNotTakenForOneOfOurs) {
  if (run({"unshare", "--pid", "--fork", "--mount-proc", "true"}, sound_.variables()) != 0) {
    GTEST_SKIP() << "this user may not make a namespace of process ids";
  }
  play({"unshare", "--pid", "--fork", "--mount-proc", "paplay", tone()});
  EXPECT_EQ(log_->heardSoFar(), (Heards{{"audiomxd", "paplay", 0}}));
}

}  // namespace
}  // namespace tollvane::test
