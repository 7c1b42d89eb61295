// Windows of real programs, with a real X server and a real window manager.
#include "platform/linux/x11/x11_windows.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/linux/apps/fake_system.h"
#include "tests/support/process.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;
using ::testing::IsEmpty;

class HandClock : public Clock {
 public:
  TimePoint now() const override { return TimePoint() + elapsed_; }
  Instant steadyNow() const override { return Instant() + elapsed_; }
  void advance(Duration duration) { elapsed_ += std::chrono::duration_cast<std::chrono::microseconds>(duration); }

 private:
  std::chrono::microseconds elapsed_ = 1h;
};

// A program whose standard output is a pipe. It ends with the object, or with the test.
class Program {
 public:
  explicit Program(std::vector<std::string> arguments) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) std::abort();
    const int quiet = std::getenv("TOLLVANE_TEST_VERBOSE") == nullptr ? ::open("/dev/null", O_WRONLY | O_CLOEXEC) : 2;
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      if (::getppid() != parent) ::_exit(127);
      ::dup2(ends[1], STDOUT_FILENO);
      ::dup2(quiet, STDERR_FILENO);
      ::execvp(pointers[0], pointers.data());
      ::_exit(127);
    }
    ::close(ends[1]);
    if (quiet != 2) ::close(quiet);
    output_ = ends[0];
  }
  ~Program() {
    end();
    ::close(output_);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  Pid pid() const { return pid_; }

  std::string readLine() const {
    std::string line;
    for (char c = 0; ::read(output_, &c, 1) == 1 && c != '\n';) line += c;
    return line;
  }

  int wait() {
    int status = -1;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    return status;
  }

  void signal(int number) const { ::kill(pid_, number); }

  void end() {
    if (pid_ <= 0) return;
    signal(SIGCONT);
    signal(SIGKILL);
    wait();
  }

 private:
  pid_t pid_ = -1;
  int output_ = -1;
};

class X11WindowsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const char* old = std::getenv("DISPLAY")) userDisplay_ = old;
    startServer();
  }

  void TearDown() override {
    manager_.reset();
    server_.reset();
    userDisplay_ ? ::setenv("DISPLAY", userDisplay_->c_str(), 1) : ::unsetenv("DISPLAY");
  }

  // The display number is the same after a restart, and so high that no other server takes it as the first free one.
  void startServer() {
    const std::string number = std::to_string(1000 + ::getpid() % 50000);
    server_ = std::make_unique<Program>(std::vector<std::string>{"Xvfb", ":" + number, "-displayfd", "1", "-screen",
                                                                 "0", "640x480x24", "-nolisten", "tcp", "-noreset"});
    number_ = server_->readLine();
    ASSERT_FALSE(number_.empty()) << "Xvfb";
    ::setenv("DISPLAY", (":" + number_).c_str(), 1);
    // The window manager may never manage a window that appears while it starts. It runs "echo ready" when it has
    // started.
    manager_ =
        std::make_unique<Program>(std::vector<std::string>{"openbox", "--sm-disable", "--startup", "echo ready"});
    std::string line = manager_->readLine();
    while (!line.empty() && line != "ready") line = manager_->readLine();
    ASSERT_EQ(line, "ready") << "openbox";
  }

  void killServer() {
    server_->end();
    manager_->end();
  }

  std::string property(const std::string& window, const std::string& name) {
    std::vector<std::string> arguments = {"xprop", window};
    if (window != "-root") arguments = {"xprop", "-id", window};
    arguments.insert(arguments.end(), {"-notype", name});
    Program program(arguments);
    std::string line = program.readLine();
    program.wait();
    const auto hash = line.find("0x");
    return hash == std::string::npos ? std::string() : line.substr(hash);
  }

  void setProperty(const std::string& window, const std::string& name, const std::string& format,
                   const std::string& value) {
    Program program({"xprop", "-id", window, "-f", name, format, "-set", name, value});
    ASSERT_EQ(program.wait(), 0);
  }

  // Waits until the window manager knows the program's one window. Its toolkit does not set the process of the window,
  // so it is set here.
  std::string openMessage(const Program& message) {
    std::string window;
    EXPECT_TRUE(test::waitUntil(
        [&] {
          window = property("-root", "_NET_CLIENT_LIST");
          return !window.empty();
        },
        20s));
    setProperty(window, "_NET_WM_PID", "32c", std::to_string(message.pid()));
    return window;
  }

  const std::vector<X11Window>& look() {
    clock_.advance(1s);
    return windows_.normalWindows();
  }

  HandClock clock_;
  XcbWindows windows_{clock_};
  std::unique_ptr<Program> server_, manager_;
  std::string number_;

 private:
  std::optional<std::string> userDisplay_;
};

TEST_F(X11WindowsTest, AWindowIsSeenWithItsProcessAndClass) {
  EXPECT_THAT(look(), IsEmpty());
  const Program message({"xmessage", "hello"});
  openMessage(message);
  ASSERT_EQ(look().size(), 1u);
  EXPECT_EQ(look()[0].pid, message.pid());
  EXPECT_EQ(look()[0].instance, "xmessage");
  EXPECT_EQ(look()[0].windowClass, "Xmessage");
}

TEST_F(X11WindowsTest, OnlyOrdinaryWindowsOfThisHostCount) {
  const Program message({"xmessage", "hello"});
  const std::string window = openMessage(message);
  ASSERT_EQ(look().size(), 1u);

  setProperty(window, "WM_CLIENT_MACHINE", "8s", "elsewhere.example");
  EXPECT_THAT(look(), IsEmpty());
  char host[256] = {};
  ::gethostname(host, sizeof host - 1);
  setProperty(window, "WM_CLIENT_MACHINE", "8s", host);
  EXPECT_EQ(look().size(), 1u);

  setProperty(window, "_NET_WM_WINDOW_TYPE", "32a", "_NET_WM_WINDOW_TYPE_DIALOG");
  EXPECT_THAT(look(), IsEmpty());
  setProperty(window, "_NET_WM_WINDOW_TYPE", "32a", "_NET_WM_WINDOW_TYPE_DOCK");
  EXPECT_THAT(look(), IsEmpty());
  setProperty(window, "_NET_WM_WINDOW_TYPE", "32a", "_NET_WM_WINDOW_TYPE_NORMAL");
  EXPECT_EQ(look().size(), 1u);

  setProperty(window, "_NET_WM_PID", "32c", "0");
  EXPECT_THAT(look(), IsEmpty());
  setProperty(window, "_NET_WM_PID", "32c", "4294967295");
  EXPECT_THAT(look(), IsEmpty());
}

TEST_F(X11WindowsTest, AToolkitsOwnPropertiesSuffice) {
  test::Variables variables = test::ownVariables();
  variables["QT_QPA_PLATFORM"] = "xcb";
  test::Process::Options options;
  options.input = test::Process::Input::written;
  options.variables = variables;
  test::Process probe({TOLLVANE_PROBES "/settings_probe", "welcome"}, options);
  probe.writeLine("show");
  ASSERT_TRUE(test::waitUntil([&] { return !look().empty(); }, 20s));
  EXPECT_EQ(look()[0].pid, probe.pid());
  EXPECT_EQ(look()[0].windowClass, "Tollvane");
}

TEST_F(X11WindowsTest, AnAnswerIsReusedForATenthOfASecond) {
  EXPECT_THAT(look(), IsEmpty());
  const Program message({"xmessage", "hello"});
  openMessage(message);
  clock_.advance(99999us);
  EXPECT_THAT(windows_.normalWindows(), IsEmpty());
  clock_.advance(1us);
  EXPECT_EQ(windows_.normalWindows().size(), 1u);
}

TEST_F(X11WindowsTest, AWindowThatClosesIsGone) {
  Program message({"xmessage", "hello"});
  openMessage(message);
  ASSERT_EQ(look().size(), 1u);
  message.end();
  EXPECT_TRUE(test::waitUntil([&] { return look().empty(); }, 20s));
}

TEST_F(X11WindowsTest, AServerThatWasRestartedIsFoundAgain) {
  EXPECT_THAT(look(), IsEmpty());
  killServer();
  EXPECT_THAT(look(), IsEmpty());
  EXPECT_THAT(look(), IsEmpty()) << "the second look must not fail either";
  startServer();
  const Program message({"xmessage", "hello"});
  openMessage(message);
  EXPECT_EQ(look().size(), 1u);
}

TEST_F(X11WindowsTest, ARestartBetweenTwoQuestionsDoesNoHarm) {
  EXPECT_THAT(look(), IsEmpty());
  killServer();
  startServer();
  const Program message({"xmessage", "hello"});
  openMessage(message);
  EXPECT_EQ(look().size(), 1u);
}

TEST_F(X11WindowsTest, AServerThatHangsIsNotWaitedForAndNotAskedAgainForAWhile) {
  const Program message({"xmessage", "hello"});
  openMessage(message);
  ASSERT_EQ(look().size(), 1u);
  server_->signal(SIGSTOP);
  EXPECT_THAT(look(), IsEmpty());
  server_->signal(SIGCONT);
  clock_.advance(3s);
  EXPECT_THAT(windows_.normalWindows(), IsEmpty()) << "not asked again so soon";
  clock_.advance(2s);
  EXPECT_EQ(windows_.normalWindows().size(), 1u);
}

TEST_F(X11WindowsTest, NothingIsAskedWithoutADisplay) {
  ::unsetenv("DISPLAY");
  EXPECT_THAT(look(), IsEmpty());
  ::setenv("DISPLAY", ":54321", 1);
  EXPECT_THAT(look(), IsEmpty());
  ::setenv("DISPLAY", "nonsense", 1);
  EXPECT_THAT(look(), IsEmpty());
}

TEST_F(X11WindowsTest, AProgramWithoutAnEntryIsAnApplicationByItsWindow) {
  const Program message({"xmessage", "hello"});
  openMessage(message);
  test::FakeSystem system;
  const ProcFs processes;
  DesktopEntries entries(system.environment);
  const Applications applications(processes, entries, windows_);
  const test::HurryingClock clock;
  const LinuxWorkspace workspace(applications, clock, system.raiser, system.launcher);
  clock_.advance(1s);
  const auto application = workspace.runningApplication(message.pid());
  ASSERT_TRUE(application);
  EXPECT_EQ(application->localizedName, "Xmessage");
  EXPECT_EQ(application->activationPolicy, ActivationPolicy::regular);

  system.entry("org.example.Message", "Name=Message\nExec=sh -c x\nStartupWMClass=xmessage\n");
  EXPECT_EQ(workspace.runningApplication(message.pid())->localizedName, "Message");
  // Other tests may run the same program at the same time, each on its own server.
  EXPECT_THAT(workspace.runningApplications("org.example.Message"),
              testing::Contains(testing::Field(&RunningApplication::pid, message.pid())));
  EXPECT_FALSE(workspace.runningApplication(server_->pid())) << "the server itself has no window";
}

}  // namespace
}  // namespace tollvane
