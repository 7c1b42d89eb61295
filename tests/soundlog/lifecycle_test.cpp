// TollvaneLog when servers, buses and readers come and go.
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/soundlog/running_log.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;

class LifecycleTest : public ::testing::Test {
 protected:
  void hearsANewSound(RunningLog& log) {
    log.heardSoFar();  // skips what was played to find out whether the server is ready
    const auto player = sound_.begin({"pw-play", sound_.tone(200ms)});
    EXPECT_EQ(log.next(), (Heard{"audiomxd", "pw-play", player->pid()}));
  }

  PrivateSound sound_;
};

// For tests during which the servers just run. They share one session.
class SteadyTest : public SharedSession<PrivateSound> {
 protected:
  PrivateSound& sound_ = session;
};

TEST_F(LifecycleTest, AServerThatIsStartedLaterIsHeard) {
  RunningLog log(sound_);
  sound_.start();
  ASSERT_TRUE(log.listens());
  hearsANewSound(log);
}

TEST_F(LifecycleTest, AServerWhoseDirectoryIsMadeLaterIsHeard) {
  const auto later = sound_.home() / "later";
  sound_.setVariable("XDG_RUNTIME_DIR", later / "run");
  RunningLog log(sound_);
  std::filesystem::create_directory_symlink(sound_.runtimeDirectory().parent_path(), later);
  sound_.start();
  ASSERT_TRUE(log.listens());
}

// The next message of TollvaneLog about the sound server itself.
std::string aboutServer(Process& log) {
  while (const auto text = log.line(20s)) {
    const auto line = nlohmann::json::parse(*text, nullptr, false);
    if (line.is_object() && line.value("processImagePath", "") == "/tollvane/TollvaneLog")
      return line.value("eventMessage", "");
  }
  return "";
}

TEST_F(LifecycleTest, AMissingSoundServerIsReportedAndSoIsTheOneThatComes) {
  const auto log = sound_.begin({TOLLVANE_LOG, "stream", "--style", "ndjson"}, Process::Output::read);
  EXPECT_EQ(aboutServer(*log), "sound_server=missing");
  sound_.start();
  EXPECT_EQ(aboutServer(*log), "sound_server=found");
  sound_.killPipeWire();
  EXPECT_EQ(aboutServer(*log), "sound_server=missing");
}

TEST_F(LifecycleTest, ItHasGivenUpItsRightsBeforeItsFirstLine) {
  const auto log = sound_.begin({TOLLVANE_LOG, "stream", "--style", "ndjson"}, Process::Output::read);
  EXPECT_EQ(aboutServer(*log), "sound_server=missing");
  std::ifstream stream("/proc/" + std::to_string(log->pid()) + "/status");
  const std::string status(std::istreambuf_iterator<char>(stream), {});
  EXPECT_NE(status.find("NoNewPrivs:\t1\n"), status.npos) << status;
  EXPECT_NE(status.find("Seccomp:\t2\n"), status.npos) << status;
}

TEST_F(LifecycleTest, AServerThatCrashesAndComesBackIsHeardAgain) {
  sound_.start();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  for (int round = 0; round < 2; ++round) {
    sound_.killPipeWire();
    sound_.startPipeWire();
    ASSERT_TRUE(log.listens());
  }
  hearsANewSound(log);
  EXPECT_TRUE(log.process().running());
}

TEST_F(LifecycleTest, AServerThatIsRestartedIsHeardAgain) {
  sound_.start();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  sound_.stopPipeWire();
  sound_.startPipeWire();
  ASSERT_TRUE(log.listens());
  hearsANewSound(log);
}

TEST_F(LifecycleTest, ABusThatCrashesAndComesBackIsSeenAgain) {
  sound_.startBus();
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  sound_.killBus();
  sound_.startBus();
  ASSERT_TRUE(log.seesNotifications());
  notify(sound_, "", {"1", "desktop-entry", "s", "org.example.Mail"});
  EXPECT_EQ(log.next(), (Heard{"usernoted", "org.example.Mail", -1}));
}

TEST_F(LifecycleTest, ABusThatIsStartedLaterIsSeen) {
  RunningLog log(sound_);
  sound_.startBus();
  EXPECT_TRUE(log.seesNotifications());
}

TEST_F(LifecycleTest, WithoutBusAndServerItWaits) {
  RunningLog log(sound_);
  EXPECT_EQ(log.process().exitCode(300ms), std::nullopt);
}

TEST_F(SteadyTest, ItEndsWhenItsReaderGoesAwayEvenIfNothingIsHeard) {
  sound_.start();
  RunningLog log(sound_);
  ASSERT_TRUE(log.listens());
  log.closeOutput();
  EXPECT_EQ(log.process().exitCode(), 0);
}

TEST_F(SteadyTest, ItEndsWhenItsReaderIsKilled) {
  // The shell stands in for the application. Only the shell holds the reading end.
  const std::string fifo = sound_.home() / "fifo";
  ASSERT_EQ(run({"mkfifo", fifo}, sound_.variables()), 0);
  const auto reader = sound_.begin({"sh", "-c", "exec sleep 100 < " + fifo});
  const auto log = sound_.begin({"sh", "-c", "exec \"$0\" stream --style ndjson > " + fifo, TOLLVANE_LOG});
  ASSERT_TRUE(waitUntil([&log] {
    std::ifstream name("/proc/" + std::to_string(log->pid()) + "/comm");
    std::string command;
    return std::getline(name, command) && command == "TollvaneLog";
  }));
  EXPECT_TRUE(log->running());
  reader->kill();
  EXPECT_EQ(log->exitCode(), 0);
}

TEST_F(SteadyTest, ItEndsWhenAsked) {
  sound_.startBus();
  for (const int signal : {SIGTERM, SIGINT}) {
    RunningLog log(sound_);
    ASSERT_TRUE(log.seesNotifications());
    log.process().signal(signal);
    EXPECT_EQ(log.process().exitCode(), 0);
  }
}

TEST_F(LifecycleTest, AServerThatHangsDoesNotKeepItFromEnding) {
  sound_.start();
  kill(sound_.pipeWirePid(), SIGSTOP);
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  log.process().signal(SIGTERM);
  EXPECT_EQ(log.process().exitCode(), 0);
}

TEST_F(SteadyTest, AReaderThatPausesMissesNothing) {
  sound_.startBus();
  RunningLog log(sound_);
  ASSERT_TRUE(log.seesNotifications());
  // More lines than a pipe holds: the first ones wait in the pipe, the others in TollvaneLog.
  const std::string longName(200, 'n');
  constexpr int count = 300;
  for (int i = 0; i < count; ++i) notify(sound_, "", {"1", "desktop-entry", "s", longName + std::to_string(i)});
  for (int i = 0; i < count; ++i) ASSERT_EQ(log.next(), (Heard{"usernoted", longName + std::to_string(i), -1}));
}

struct Result {
  int code = -1;
  std::string output;
  std::string errors;
};

Result runLog(const PrivateSound& sound, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), TOLLVANE_LOG);
  const auto errors = sound.home() / "said.log";
  std::filesystem::remove(errors);
  Process process(arguments, {.output = Process::Output::read, .variables = sound.variables(), .errors = errors});
  Result result;
  result.output = process.rest();
  result.code = process.exitCode().value_or(-1);
  std::ifstream said(errors);
  result.errors.assign(std::istreambuf_iterator<char>(said), {});
  return result;
}

TEST_F(SteadyTest, HelpIsPrintedIfAskedFor) {
  const Result help = runLog(sound_, {"--help"});
  EXPECT_EQ(help.code, 0);
  EXPECT_NE(help.output.find("Usage: TollvaneLog stream"), std::string::npos);
  EXPECT_EQ(help.errors, "");
}

TEST_F(SteadyTest, AMistakeIsOneSentenceAndExitCode64) {
  const Result mistake = runLog(sound_, {"stream", "--colour"});
  EXPECT_EQ(mistake.code, 64);
  EXPECT_EQ(mistake.output, "");
  EXPECT_EQ(mistake.errors, "TollvaneLog: '--colour' is not understood. Try --help.\n");
}

TEST_F(SteadyTest, WithoutAStyleTheLinesAreForPeople) {
  sound_.start();
  const auto log = sound_.begin({TOLLVANE_LOG, "stream"}, Process::Output::read);
  std::string line;
  ASSERT_TRUE(waitUntil([&] {
    EXPECT_TRUE(sound_.play({"pw-play", sound_.tone(10ms)}));
    line = log->line(300ms).value_or("");
    return !line.empty();
  }));
  EXPECT_NE(line.find("  sound  pw-play  (pid "), std::string::npos) << line;
}

}  // namespace
}  // namespace tollvane::test
