#include "platform/linux/kernel/proc_fs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "tests/platform/linux/apps/fake_system.h"

namespace tollvane {
namespace {

using test::FakeSystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

TEST(ProcFs, KnowsThisProcess) {
  const ProcFs processes;
  const auto status = processes.status(::getpid());
  ASSERT_TRUE(status);
  EXPECT_EQ(status->parent, ::getppid());
  EXPECT_EQ(status->state, 'R');
  EXPECT_GT(status->startTime, 0u);
  EXPECT_EQ(processes.executable(::getpid()), std::filesystem::read_symlink("/proc/self/exe").string());
  EXPECT_THAT(processes.all(), Contains(::getpid()));
  EXPECT_TRUE(processes.isOwn(::getpid()));
  EXPECT_FALSE(processes.isOwn(0));
  EXPECT_EQ(processes.programName(::getpid()), "kernel_test");
}

TEST(ProcFs, ParenthesesAndSpacesInTheNameAreNoFields) {
  FakeSystem system;
  system.process({.pid = 100, .parent = 42, .command = "a) S 7 (b) R 8", .startTime = 987654321012});
  const auto status = system.processes().status(100);
  ASSERT_TRUE(status);
  EXPECT_EQ(status->parent, 42);
  EXPECT_EQ(status->state, 'S');
  EXPECT_EQ(status->startTime, 987654321012u);
  EXPECT_EQ(system.processes().parentPid(100), 42);
}

TEST(ProcFs, NothingIsKnownOfAMissingProcess) {
  FakeSystem system;
  const ProcFs& processes = system.processes();
  EXPECT_FALSE(processes.status(100));
  EXPECT_FALSE(processes.executable(100));
  EXPECT_FALSE(processes.environment(100, "HOME"));
  EXPECT_THAT(processes.arguments(100), IsEmpty());
  EXPECT_EQ(processes.command(100), "");
  EXPECT_EQ(processes.cgroup(100), "");
  EXPECT_EQ(processes.programName(100), "");
  EXPECT_FALSE(processes.parentPid(100));
  EXPECT_FALSE(processes.responsiblePid(100));
}

TEST(ProcFs, ABrokenStatFileIsNoProcess) {
  FakeSystem system;
  for (const char* text : {"", "100", "100 (a", "100 (a)", "100 (a) S", "100 (a) S x 1 1", "100 (a) S 1 2 3"}) {
    test::writeFile(system.processes().root() / "100/stat", text);
    EXPECT_FALSE(system.processes().status(100)) << text;
  }
}

TEST(ProcFs, AProgramThatWasReplacedOnDiskKeepsItsPath) {
  FakeSystem system;
  system.process({.pid = 100, .executable = "/usr/lib/firefox-esr/firefox-esr (deleted)"});
  EXPECT_EQ(system.processes().executable(100), "/usr/lib/firefox-esr/firefox-esr");
  // This file's name really ends like that.
  const std::string odd = system.program("/usr/bin/odd (deleted)");
  system.process({.pid = 101, .executable = odd});
  EXPECT_EQ(system.processes().executable(101), odd);
}

TEST(ProcFs, EmptyArgumentsAndLineBreaksAreKept) {
  FakeSystem system;
  system.process({.pid = 100, .arguments = {"prog", "", "two words", "a\nb"}});
  EXPECT_THAT(system.processes().arguments(100), ElementsAre("prog", "", "two words", "a\nb"));
}

TEST(ProcFs, AVariableIsFoundByItsWholeName) {
  FakeSystem system;
  system.process({.pid = 100, .environment = {"XPATH=wrong", "PATHX=wrong", "EMPTY=", "PATH=/bin=x"}});
  EXPECT_EQ(system.processes().environment(100, "PATH"), "/bin=x");
  EXPECT_EQ(system.processes().environment(100, "EMPTY"), "");
  EXPECT_FALSE(system.processes().environment(100, "PAT"));
  EXPECT_FALSE(system.processes().environment(100, ""));
}

TEST(ProcFs, TheUnifiedCgroupIsPreferredToSystemdsOwn) {
  FakeSystem system;
  system.process({.pid = 100, .cgroup = "/user.slice/app-x-1.scope"});
  EXPECT_EQ(system.processes().cgroup(100), "/user.slice/app-x-1.scope");
  test::writeFile(system.processes().root() / "100/cgroup",
                  "12:cpu,cpuacct:/\n1:name=systemd:/user.slice/app-y-2.scope\n0::/\n");
  EXPECT_EQ(system.processes().cgroup(100), "/user.slice/app-y-2.scope");
}

TEST(ProcFs, OnlyNumbersAreProcessesAndTheyAscend) {
  FakeSystem system;
  for (const Pid pid : {200, 30, 1000}) system.process({.pid = pid});
  for (const char* name : {"self", "12a", "-5", "0", "99999999999"})
    std::filesystem::create_directories(system.processes().root() / name);
  EXPECT_THAT(system.processes().all(), ElementsAre(30, 200, 1000));
  EXPECT_THAT(ProcFs("/nonexistent").all(), IsEmpty());
}

TEST(ProgramName, ALinkedToolIsCalledByItsLink) {
  FakeSystem system;
  const std::string cat = system.program("/usr/bin/pw-cat");
  system.link("/usr/bin/pw-play", "pw-cat");
  const std::string path = "PATH=" + system.at("/usr/bin");
  system.process({.pid = 100, .executable = cat, .arguments = {"pw-play", "x.wav"}, .environment = {path}});
  EXPECT_EQ(system.processes().programName(100), "pw-play");
  system.process({.pid = 101, .executable = cat, .arguments = {system.at("/usr/bin/pw-play")}});
  EXPECT_EQ(system.processes().programName(101), "pw-play");
}

TEST(ProgramName, ALinkElsewhereIsFoundInTheProcessesOwnSearchPath) {
  FakeSystem system;
  const std::string cat = system.program("/usr/bin/pw-cat");
  system.link("/home/bin/blare", "/usr/bin/pw-cat");
  const std::string path = "PATH=relative:" + system.at("/nowhere") + ":" + system.at("/home/bin");
  system.process({.pid = 100, .executable = cat, .arguments = {"blare"}, .environment = {path}});
  EXPECT_EQ(system.processes().programName(100), "blare");
  system.process({.pid = 101, .executable = cat, .arguments = {"./bin/blare"}});
  EXPECT_EQ(system.processes().programName(101), "blare") << "the link is found from the working directory";
}

TEST(ProgramName, ANameThatNoLinkProvesIsNotBelieved) {
  FakeSystem system;
  const std::string program = system.program("/usr/bin/player");
  system.program("/usr/bin/other");
  const std::string path = "PATH=" + system.at("/usr/bin");
  system.process({.pid = 100, .executable = program, .arguments = {"other"}, .environment = {path}});
  EXPECT_EQ(system.processes().programName(100), "player");
  system.process({.pid = 101, .executable = program, .arguments = {"nginx: master process"}});
  EXPECT_EQ(system.processes().programName(101), "player");
  system.process({.pid = 102, .executable = program, .arguments = {"-player"}});
  EXPECT_EQ(system.processes().programName(102), "player") << "the dash of a login shell is dropped";
}

TEST(ProgramName, AnInterpreterIsCalledByItsScript) {
  FakeSystem system;
  system.process({.pid = 100,
                  .executable = "/usr/bin/python3.11",
                  .arguments = {"/usr/bin/python3", "-u", "/usr/bin/tuner", "--loud"}});
  EXPECT_EQ(system.processes().programName(100), "tuner");
}

TEST(ProgramName, AShellWithACommandIsTheShell) {
  FakeSystem system;
  const std::string dash = system.program("/usr/bin/dash");
  system.link("/usr/bin/sh", "dash");
  system.process({.pid = 100, .executable = dash, .arguments = {"sh", "-c", "pw-play x.wav; true"}});
  EXPECT_EQ(system.processes().programName(100), "sh");
}

TEST(ProgramName, TheKernelsNameIsTheLastResort) {
  FakeSystem system;
  system.process({.pid = 100, .arguments = {"/usr/bin/locked"}, .command = "locked"});
  EXPECT_EQ(system.processes().programName(100), "locked");
}

}  // namespace
}  // namespace tollvane
