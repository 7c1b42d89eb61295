// Tests that the implementations for macOS keep the contracts of the roles. Left out are those whose tests would change
// the Mac (start at login) or need a bundle and a web server around them.
#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "platform/macos/roles.h"
#include "platform/posix/posix_files.h"
#include "tests/contract/child_processes_contract.h"
#include "tests/contract/clock_contract.h"
#include "tests/contract/defaults_contract.h"
#include "tests/contract/files_contract.h"
#include "tests/contract/main_queue_contract.h"
#include "tests/contract/process_table_contract.h"
#include "tests/support/temporary_directory.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;

struct MacFiles {
  TemporaryDirectory directory;
  PosixFiles files;
  std::filesystem::path folder = directory.path();
};
INSTANTIATE_TYPED_TEST_SUITE_P(MacOS, FilesContract, MacFiles);

// The defaults of this test program, which has none at the beginning and at the end.
class MacDefaults {
 public:
  MacDefaults() { forget(); }
  ~MacDefaults() { forget(); }
  Defaults& defaults() { return *defaults_; }
  void startAgain() { defaults_ = makeDefaults(); }

 private:
  static void forget() {
    [NSUserDefaults.standardUserDefaults removePersistentDomainForName:NSProcessInfo.processInfo.processName];
  }

  std::unique_ptr<Defaults> defaults_ = makeDefaults();
};
INSTANTIATE_TYPED_TEST_SUITE_P(MacOS, DefaultsContract, MacDefaults);

// The run loop of the main thread, which also serves the main queue. No method waits for ever.
class RunLoop {
 public:
  void run(Duration time = 20ms) {
    const auto end = std::chrono::steady_clock::now() + time;
    do turn(1ms);
    while (std::chrono::steady_clock::now() < end);
  }
  bool runUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (!condition() && std::chrono::steady_clock::now() < deadline) turn(50ms);
    return condition();
  }

 private:
  static void turn(std::chrono::duration<double> time) {
    @autoreleasepool {
      CFRunLoopRunInMode(kCFRunLoopDefaultMode, time.count(), true);
    }
  }
};

class MacMainQueue : public RunLoop {
 public:
  void addFile(const std::string& name) const { directory_.write(name, "x"); }
  void removeFolder() const { std::filesystem::remove_all(folder); }

 private:
  TemporaryDirectory directory_;
  std::unique_ptr<MainQueue> made_ = makeMainQueue();

 public:
  MainQueue& queue = *made_;
  std::filesystem::path folder = directory_.path();
};
INSTANTIATE_TYPED_TEST_SUITE_P(MacOS, MainQueueContract, MacMainQueue);

// CTest sets the time zone and the language.
class MacClock {
 public:
  std::unique_ptr<Clock> madeClock = makeClock();
  std::unique_ptr<DateFormatter> madeDates = makeDateFormatter();
  const Clock& clock = *madeClock;
  const DateFormatter& dates = *madeDates;
};
INSTANTIATE_TYPED_TEST_SUITE_P(MacOS, ClockContract, MacClock);

// Starts shells. Each writes its process id into a file before it does anything else.
class MacChildren : public RunLoop {
 public:
  std::unique_ptr<ChildProcess> start(const std::string& text, bool stays, ChildProcesses::Launch handlers) {
    handlers.executable = "/bin/sh";
    handlers.arguments = {"-c", "echo $$ > \"$0\"; printf %s \"$1\"; [ -z \"$2\" ] || exec sleep 1000",
                          directory_ / "pid", text, stays ? "stays" : ""};
    return children_->launch(std::move(handlers));
  }
  std::unique_ptr<ChildProcess> startMissing(ChildProcesses::Launch handlers) {
    handlers.executable = directory_ / "missing";
    return children_->launch(std::move(handlers));
  }
  bool isRunning() const { return ::kill(std::stoi(directory_.read("pid")), 0) == 0; }

 private:
  TemporaryDirectory directory_;
  std::unique_ptr<Bundle> bundle_ = makeBundle();
  std::unique_ptr<ChildProcesses> children_ = makeChildProcesses(*bundle_, nullptr);
};
INSTANTIATE_TYPED_TEST_SUITE_P(MacOS, ChildProcessesContract, MacChildren);

struct MacProcesses {
  std::unique_ptr<ProcessTable> made = makeProcessTable();
  ProcessTable& processes = *made;
  Pid parent = ::getppid(), child = ::getpid();
  Pid missing = 1 << 30;  // larger than the kernel's largest
};
INSTANTIATE_TYPED_TEST_SUITE_P(MacOS, ProcessTableContract, MacProcesses);

}  // namespace
}  // namespace tollvane::test
