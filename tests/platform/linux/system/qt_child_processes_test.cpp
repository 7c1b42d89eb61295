#include "platform/linux/system/qt_child_processes.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <QCoreApplication>
#include <QTimer>
#include <filesystem>

#include "detect/watcher.h"
#include "platform/linux/system/executable_bundle.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_application.h"
#include "tests/virtual/log_lines.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

class QtChildProcessesTest : public testing::Test {
 protected:
  QtChildProcessesTest() {
    // If a test waits in vain, this ends its wait, and the test fails.
    QTimer::singleShot(20'000, &application, [] { QCoreApplication::exit(1); });
  }

  std::unique_ptr<ChildProcess> shell(const std::string& script) {
    return children.launch({
        .executable = "/bin/sh",
        .arguments = {"-c", script},
        .onOutput =
            [this](std::string_view bytes) {
              output += bytes;
              if (whenOutput) whenOutput();
            },
        .onTermination =
            [this] {
              ++terminations;
              QCoreApplication::exit(0);
            },
    });
  }
  void waitForEnd() { ASSERT_EQ(QCoreApplication::exec(), 0) << "the program did not end"; }

  test::TestApplication application;
  QtChildProcesses children;
  std::string output;
  std::function<void()> whenOutput;
  int terminations = 0;
};

TEST_F(QtChildProcessesTest, StandardInputIsInheritedAndErrorsGoNowhere) {
  const auto process = shell("readlink /proc/$$/fd/0; readlink /proc/$$/fd/2");
  waitForEnd();
  EXPECT_EQ(output, std::filesystem::read_symlink("/proc/self/fd/0").string() + "\n/dev/null\n");
}

TEST_F(QtChildProcessesTest, AllOutputArrivesBeforeTheEnd) {
  const auto process = shell("printf 'one\\ntwo'; echo silent >&2; exit 3");
  ASSERT_NE(process, nullptr);
  waitForEnd();
  EXPECT_EQ(output, "one\ntwo");
  EXPECT_EQ(terminations, 1);
}

TEST_F(QtChildProcessesTest, ArgumentsAreNotReadByAShell) {
  const auto process = children.launch({
      .executable = "/bin/echo",
      .arguments = {"-n", "a b", "$HOME;*", ""},
      .onOutput = [this](std::string_view bytes) { output += bytes; },
      .onTermination = [] { QCoreApplication::exit(0); },
  });
  waitForEnd();
  EXPECT_EQ(output, "a b $HOME;* ");
}

TEST_F(QtChildProcessesTest, AProgramThatCannotBeStartedGivesNoProcess) {
  const test::TemporaryDirectory directory;
  directory.write("not-executable", "#!/bin/sh\n");
  for (const auto& path : {directory / "missing", directory / "not-executable", directory.path()}) {
    const auto process = children.launch({
        .executable = path,
        .arguments = {},
        .onOutput = [](std::string_view) {},
        .onTermination = [this] { ++terminations; },
    });
    EXPECT_EQ(process, nullptr);
  }
  QCoreApplication::processEvents();
  EXPECT_EQ(terminations, 0);
}

TEST_F(QtChildProcessesTest, AKilledProgramIsReportedLikeAnyOther) {
  const auto process = shell("kill -9 $$");
  waitForEnd();
  EXPECT_EQ(terminations, 1);
}

TEST_F(QtChildProcessesTest, ARemovedHandlerIsNotCalledAndTheProgramEndsWithItsOwner) {
  auto process = shell("echo $$; exec sleep 1000");
  whenOutput = [] { QCoreApplication::exit(0); };
  waitForEnd();
  const pid_t pid = std::stoi(output);
  ASSERT_EQ(::kill(pid, 0), 0);
  process->removeTerminationHandler();
  process.reset();
  EXPECT_NE(::kill(pid, 0), 0);
  EXPECT_EQ(terminations, 0);
}

TEST_F(QtChildProcessesTest, AProgramThatIgnoresTheRequestToEndIsEndedWithItsOwner) {
  auto process = shell("trap '' TERM; echo $$; while :; do sleep 1000; done");
  whenOutput = [] { QCoreApplication::exit(0); };
  waitForEnd();
  const pid_t pid = std::stoi(output);
  process->terminate();
  process.reset();
  EXPECT_NE(::kill(pid, 0), 0);
}

// The program TollvaneLog in the bundle is the log tool, whatever it really is.
TEST_F(QtChildProcessesTest, TheWatcherHearsARealProgram) {
  const test::TemporaryDirectory directory;
  directory.write("TollvaneLog",
                  "#!/bin/sh\n[ \"$1 $2 $3 $4\" = 'stream --style ndjson --predicate' ] || exit 1\ncat <<'END'\n" +
                      test::outputStarted("player", 4242) + "END\n");
  std::filesystem::permissions(directory / "TollvaneLog", std::filesystem::perms::owner_all);
  test::VirtualPlatform system;
  const ExecutableBundle bundle(directory.path());
  const Resolver resolver(system.processes, system.workspace, system.locations, system.files);
  Watcher watcher(system.queue, system.clock, children, bundle, resolver);
  std::vector<std::string> heard;
  watcher.onEvent = [&](const std::shared_ptr<SoundEvent>& event) {
    heard.push_back(event->app);
    QCoreApplication::exit(0);
  };
  watcher.start();
  waitForEnd();
  EXPECT_EQ(heard, std::vector<std::string>{"player"});
}

}  // namespace
}  // namespace tollvane
