// Tests that the virtual platform keeps the contracts of the roles.
#include <memory>
#include <utility>

#include "tests/contract/bundle_contract.h"
#include "tests/contract/child_processes_contract.h"
#include "tests/contract/clock_contract.h"
#include "tests/contract/defaults_contract.h"
#include "tests/contract/files_contract.h"
#include "tests/contract/http_contract.h"
#include "tests/contract/login_contract.h"
#include "tests/contract/main_queue_contract.h"
#include "tests/contract/process_table_contract.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;

struct VirtualFileSystem {
  VirtualFileSystem() { files.createDirectories(folder); }
  VirtualFiles files;
  std::filesystem::path folder = "/folder";
};
INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, FilesContract, VirtualFileSystem);

class VirtualDefaultsSystem {
 public:
  Defaults& defaults() { return *defaults_; }
  void startAgain() {
    auto next = std::make_unique<VirtualDefaults>();
    next->values = defaults_->values;
    defaults_ = std::move(next);
  }

 private:
  std::unique_ptr<VirtualDefaults> defaults_ = std::make_unique<VirtualDefaults>();
};
INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, DefaultsContract, VirtualDefaultsSystem);

class VirtualQueueSystem {
 public:
  VirtualQueueSystem() { queue.missingDirectories = {folder / "missing"}; }
  void run(Duration time) {
    queue.advance(time);
    queue.drainDescriptors();
  }
  bool runUntil(const std::function<bool()>& condition) {
    for (int i = 0; i < 1000 && !condition(); ++i) {
      queue.advance(1ms);
      queue.pollDescriptors();
    }
    return condition();
  }
  void addFile(const std::string&) { queue.directoryChanged(folder); }
  void removeFolder() { queue.directoryChanged(folder); }

  VirtualClock clock;
  VirtualMainQueue queue{clock};
  std::filesystem::path folder = "/folder";
};
INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, MainQueueContract, VirtualQueueSystem);

struct VirtualClockSystem {
  VirtualClock clock;
  VirtualDates dates;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, ClockContract, VirtualClockSystem);

class VirtualChildrenSystem {
 public:
  std::unique_ptr<ChildProcess> start(const std::string& text, bool stays, ChildProcesses::Launch handlers) {
    auto process = children_.launch(std::move(handlers));
    children_.last().print(text);
    if (!stays) children_.last().end();
    return process;
  }
  std::unique_ptr<ChildProcess> startMissing(ChildProcesses::Launch handlers) {
    children_.cannotStart = true;
    return children_.launch(std::move(handlers));
  }
  bool runUntil(const std::function<bool()>& condition) const { return condition(); }
  void run() const {}
  bool isRunning() { return children_.last().running; }

 private:
  VirtualChildren children_;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, ChildProcessesContract, VirtualChildrenSystem);

struct VirtualProcesses {
  VirtualProcesses() { processes.parents = {{child, parent}, {parent, 1}, {1, 0}}; }
  VirtualProcessTable processes;
  Pid parent = 100, child = 200, missing = 300;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, ProcessTableContract, VirtualProcesses);

class VirtualWeb {
 public:
  std::string page(std::optional<HttpResponse> answer) {
    answer_ = std::move(answer);
    return "https://tollvane.example/";
  }
  bool runUntil(const std::function<bool()>& condition) {
    if (!condition()) http.answer(answer_);
    return condition();
  }
  void run() const {}

  VirtualHttp http;

 private:
  std::optional<HttpResponse> answer_;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, HttpContract, VirtualWeb);

struct VirtualLoginSystem {
  void refuse() { login.refusal = "The system does not allow it."; }
  void turnOff() { login.state = LoginStatus::requiresApproval; }
  VirtualLogin login;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, LoginContract, VirtualLoginSystem);

class VirtualBundleSystem {
 public:
  VirtualBundleSystem() {
    bundle_.info = {{"Version", "1.2"}};
    bundle_.lists = {{"List", {"a", "b"}}};
    bundle_.programs = {"Helper"};
    bundle_.resources = {"Data", "Folder"};
  }
  const Bundle& bundle() const { return bundle_; }

 private:
  VirtualBundle bundle_;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, BundleContract, VirtualBundleSystem);

}  // namespace
}  // namespace tollvane::test
