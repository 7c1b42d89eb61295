// Tests that the implementations for macOS keep the contracts of the roles. Left out are those whose tests would change
// the Mac (start at login) or need a bundle around them. A GNUstep can run them too; docs/macos.md says which, and how.
#import <Foundation/Foundation.h>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "platform/macos/roles.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/unique_fd.h"
#include "tests/contract/child_processes_contract.h"
#include "tests/contract/clock_contract.h"
#include "tests/contract/defaults_contract.h"
#include "tests/contract/files_contract.h"
#include "tests/contract/http_contract.h"
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
      [NSRunLoop.currentRunLoop runMode:NSDefaultRunLoopMode
                             beforeDate:[NSDate dateWithTimeIntervalSinceNow:time.count()]];
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
  std::unique_ptr<MainQueue> queue_ = makeMainQueue();
  std::unique_ptr<ChildProcesses> children_ = makeChildProcesses(*queue_, *bundle_, nullptr);
};
INSTANTIATE_TYPED_TEST_SUITE_P(MacOS, ChildProcessesContract, MacChildren);

// A web site on this computer, which the main queue serves.
class MacWeb : public RunLoop {
 public:
  MacWeb() : server_(::socket(AF_INET, SOCK_STREAM, 0)) {
    ::signal(SIGPIPE, SIG_IGN);  // the one that asked may have gone
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address_;
    auto* const address = reinterpret_cast<sockaddr*>(&address_);
    const bool listens = ::bind(server_.get(), address, size) == 0 && ::listen(server_.get(), 8) == 0 &&
                         ::getsockname(server_.get(), address, &size) == 0;
    EXPECT_TRUE(listens);
    visitors_ = queue_->watchReadable(server_.get(), [this] { accept(); });
  }
  std::string page(std::optional<HttpResponse> answer) {
    answer_ = std::move(answer);
    return "http://127.0.0.1:" + std::to_string(ntohs(address_.sin_port)) + "/";
  }

 private:
  void accept() {
    request_.reset();
    visitor_ = UniqueFd(::accept(server_.get(), nullptr, nullptr));
    asked_.clear();
    request_ = queue_->watchReadable(visitor_.get(), [this] { read(); });
  }

  void read() {
    char bytes[4096];
    const ssize_t size = ::read(visitor_.get(), bytes, sizeof bytes);
    if (size > 0) asked_.append(bytes, static_cast<std::size_t>(size));
    if (size > 0 && (!asked_.ends_with("\r\n\r\n") || !answer_)) return;
    if (size > 0) {
      const std::string all = "HTTP/1.1 " + std::to_string(answer_->status) +
                              " Status\r\nContent-Length: " + std::to_string(answer_->body.size()) +
                              "\r\nConnection: close\r\n\r\n" + answer_->body;
      for (std::size_t sent = 0; sent < all.size();) {
        const ssize_t more = ::write(visitor_.get(), all.data() + sent, all.size() - sent);
        if (more <= 0) break;
        sent += static_cast<std::size_t>(more);
      }
    }
    request_.reset();
    visitor_.reset();
  }

  std::unique_ptr<MainQueue> queue_ = makeMainQueue();
  std::unique_ptr<Http> made_ = makeHttp();
  UniqueFd server_, visitor_;
  sockaddr_in address_{};
  std::string asked_;
  std::optional<HttpResponse> answer_;
  std::unique_ptr<MainQueue::Watch> visitors_, request_;

 public:
  Http& http = *made_;
};
INSTANTIATE_TYPED_TEST_SUITE_P(MacOS, HttpContract, MacWeb);

#ifndef GNUSTEP  // which runs on other kernels
struct MacProcesses {
  std::unique_ptr<ProcessTable> made = makeProcessTable();
  ProcessTable& processes = *made;
  Pid parent = ::getppid(), child = ::getpid();
  Pid missing = 1 << 30;  // larger than the kernel's largest
};
INSTANTIATE_TYPED_TEST_SUITE_P(MacOS, ProcessTableContract, MacProcesses);
#endif

}  // namespace
}  // namespace tollvane::test
