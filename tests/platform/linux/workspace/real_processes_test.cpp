// The workspace, tested on real processes of this machine.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <memory>

#include "platform/linux/workspace/linux_workspace.h"
#include "tests/platform/linux/apps/fake_system.h"
#include "tests/support/environment.h"
#include "tests/support/process.h"

namespace tollvane {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::FakeSystem;

const std::string sleep = fs::canonical("/bin/sleep").string();

// A real program. It ends with the object, or with the test.
class Child {
 public:
  explicit Child(std::vector<std::string> arguments) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      if (::getppid() == parent) ::execv(pointers[0], pointers.data());
      ::_exit(127);
    }
  }
  ~Child() { end(); }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  Pid pid() const { return pid_; }

  void kill() const { ::kill(pid_, SIGKILL); }

  void end() {
    if (pid_ <= 0) return;
    kill();
    ::waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }

 private:
  pid_t pid_;
};

// The processes are real, the desktop entries are made by the test.
class RealProcesses : public ::testing::Test {
 protected:
  RealProcesses()
      : entries(system.environment),
        applications(processes, entries, windows),
        workspace(applications, clock, system.raiser, system.launcher) {}

  void installNap() {
    fs::create_directories(system.at("/usr/bin"));
    fs::copy_file(sleep, nap);
  }
  void awaitExecutable(Pid pid, const std::string& executable) {
    // The kernel shows the executable a moment before the arguments.
    ASSERT_TRUE(test::waitUntil(
        [&] { return processes.executable(pid) == executable && !processes.arguments(pid).empty(); }, 20s));
  }

  FakeSystem system;
  ProcFs processes;
  DesktopEntries entries;
  NoX11Windows windows;
  Applications applications;
  test::HurryingClock clock;
  LinuxWorkspace workspace;
  // Only this test process starts a program of this name. Other tests may examine the same machine at the same time.
  const std::string name = "nap-" + std::to_string(::getpid());
  const std::string nap = system.at("/usr/bin/" + name);
};

TEST_F(RealProcesses, ACopiedProgramIsFoundByItsEntry) {
  installNap();
  system.entry(name, "Name=Afternoon Nap\nExec=" + name + " %U\n");
  const Child child({nap, "60"});
  awaitExecutable(child.pid(), nap);
  const auto application = workspace.runningApplication(child.pid());
  ASSERT_TRUE(application);
  EXPECT_EQ(application->localizedName, "Afternoon Nap");
  EXPECT_EQ(application->activationPolicy, ActivationPolicy::regular);
  const auto running = workspace.runningApplications(name);
  ASSERT_EQ(running.size(), 1u);
  EXPECT_EQ(running.front().pid, child.pid());
  EXPECT_EQ(processes.parentPid(child.pid()), ::getpid());
}

TEST_F(RealProcesses, AnApplicationOnAnotherDisplayIsNotOfThisDesktopSession) {
  installNap();
  system.entry(name, "Name=Afternoon Nap\nExec=" + name + "\n");
  const auto onDisplay = [&](const char* display) {
    const test::Environment there{{"DISPLAY", display}, {"WAYLAND_DISPLAY", nullptr}};
    return std::make_unique<Child>(std::vector<std::string>{nap, "60"});
  };
  const auto here = onDisplay(":54321"), elsewhere = onDisplay(":54322");
  for (const Pid each : {here->pid(), elsewhere->pid()}) awaitExecutable(each, nap);
  const test::Environment display{{"DISPLAY", ":54321"}, {"WAYLAND_DISPLAY", nullptr}};
  std::vector<Pid> listed;
  for (const auto& each : workspace.regularApplications())
    if (each.localizedName == "Afternoon Nap") listed.push_back(each.pid);
  EXPECT_EQ(listed, std::vector{here->pid()});
  EXPECT_TRUE(workspace.runningApplication(elsewhere->pid())) << "its sounds have a name all the same";
}

TEST_F(RealProcesses, AProgramThatIsReplacedWhileItRunsKeepsItsName) {
  installNap();
  system.entry(name, "Name=Afternoon Nap\nExec=" + name + "\n");
  const Child child({nap, "60"});
  awaitExecutable(child.pid(), nap);
  fs::copy_file(sleep, nap + ".new");
  fs::rename(nap + ".new", nap);
  EXPECT_EQ(workspace.runningApplication(child.pid())->localizedName, "Afternoon Nap");
}

TEST_F(RealProcesses, ALinkedToolIsKnownByItsLinkAndNotByItsProgram) {
  fs::create_directories(system.at("/usr/bin"));
  fs::create_symlink(sleep, nap);
  system.entry(name, "Name=Afternoon Nap\nExec=" + name + "\n");
  const Child linked({nap, "60"});
  const Child direct({sleep, "60"});
  awaitExecutable(linked.pid(), sleep);
  awaitExecutable(direct.pid(), sleep);
  EXPECT_EQ(workspace.runningApplication(linked.pid())->localizedName, "Afternoon Nap");
  EXPECT_FALSE(workspace.runningApplication(direct.pid()));
  EXPECT_EQ(processes.programName(linked.pid()), name);
  EXPECT_EQ(processes.programName(direct.pid()), "sleep");
}

TEST_F(RealProcesses, AScriptIsRecognisedAndItsChildIsFoundThroughIt) {
  const std::string script = system.program("/usr/bin/tuner", "#!/bin/sh\nexec 2>/dev/null\n" + sleep + " 60\ntrue\n");
  system.entry("tuner", "Name=Tuner\nExec=tuner\n");
  const Child child({script});
  const auto sleeper = [&]() -> std::optional<Pid> {
    for (const Pid pid : processes.all()) {
      if (processes.parentPid(pid) == child.pid() && processes.executable(pid) == sleep &&
          !processes.arguments(pid).empty())
        return pid;
    }
    return std::nullopt;
  };
  ASSERT_TRUE(test::waitUntil([&] { return sleeper().has_value(); }, 20s));
  const Pid player = *sleeper();
  EXPECT_FALSE(workspace.runningApplication(player));
  EXPECT_EQ(workspace.runningApplication(*processes.parentPid(player))->localizedName, "Tuner");
  ::kill(player, SIGKILL);
}

TEST_F(RealProcesses, AProcessThatEndedIsNoApplication) {
  installNap();
  system.entry(name, "Name=Afternoon Nap\nExec=" + name + "\n");
  Child child({nap, "60"});
  awaitExecutable(child.pid(), nap);
  const Pid pid = child.pid();
  child.kill();
  // The process is a zombie: it still has a parent, but no name.
  ASSERT_TRUE(test::waitUntil([&] { return processes.status(pid) && processes.status(pid)->state == 'Z'; }, 20s));
  EXPECT_FALSE(workspace.runningApplication(pid));
  EXPECT_EQ(processes.parentPid(pid), ::getpid());
  child.end();
  EXPECT_FALSE(workspace.runningApplication(pid));
  EXPECT_FALSE(processes.parentPid(pid));
  EXPECT_TRUE(workspace.runningApplications(name).empty());
}

TEST_F(RealProcesses, TheOldestOfAnApplicationsProcessesComesFirst) {
  installNap();
  system.entry(name, "Name=Afternoon Nap\nExec=" + name + "\n");
  const Child first({nap, "60"});
  awaitExecutable(first.pid(), nap);
  // The kernel counts start times in hundredths of a second.
  const auto age = processes.status(first.pid())->startTime;
  std::unique_ptr<Child> second;
  ASSERT_TRUE(test::waitUntil(
      [&] {
        second = std::make_unique<Child>(std::vector<std::string>{nap, "60"});
        return processes.status(second->pid())->startTime > age;
      },
      20s));
  awaitExecutable(second->pid(), nap);
  const auto running = workspace.runningApplications(name);
  ASSERT_EQ(running.size(), 2u);
  EXPECT_EQ(running[0].pid, first.pid());
  EXPECT_EQ(running[1].pid, second->pid());
}

}  // namespace
}  // namespace tollvane
