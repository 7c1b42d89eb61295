#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/macos/decisions/decisions.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"
#include "support/liveness.h"

namespace tollvane {
namespace {

// The end is reported when both the program and its output have ended, in whatever order.
class TaskProcess : public ChildProcess {
 public:
  TaskProcess(MainQueue& queue, std::shared_ptr<LogRefusal> refusal, ChildProcesses::Launch launch)
      : queue_(queue), refusal_(std::move(refusal)), launch_(std::move(launch)) {}

  ~TaskProcess() override {
    task_.terminationHandler = nil;
    [task_ terminate];
  }

  bool start() {
    NSTask* task = [[NSTask alloc] init];
    NSMutableArray<NSString*>* arguments = [NSMutableArray array];
    for (const std::string& argument : launch_.arguments) [arguments addObject:nsString(argument)];
    task.executableURL = fileURL(launch_.executable);
    task.arguments = arguments;
    task.standardOutput = pipe_;
    task.standardError = NSFileHandle.fileHandleWithNullDevice;
    const std::function<void(int)> ended = alive_.guard([this](int status) { taskEnded(status); });
    task.terminationHandler = ^(NSTask* one) {
      const int status = one.terminationReason == NSTaskTerminationReasonExit ? one.terminationStatus : 0;
      onMainQueue([ended, status] { ended(status); });
    };
    @try {
      if (![task launchAndReturnError:nil]) return false;
    } @catch (NSException*) {
      return false;
    }
    task_ = task;
    const int descriptor = pipe_.fileHandleForReading.fileDescriptor;
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    output_ = queue_.watchReadable(descriptor, [this, descriptor] { readSome(descriptor); });
    return true;
  }

  void removeTerminationHandler() override { launch_.onTermination = nullptr; }
  void terminate() override { [task_ terminate]; }

 private:
  void readSome(int descriptor) {
    std::array<char, 65536> bytes;
    const ssize_t size = ::read(descriptor, bytes.data(), bytes.size());
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (size > 0) return launch_.onOutput({bytes.data(), static_cast<std::size_t>(size)});
    output_.reset();
    finish();
  }

  void taskEnded(int status) {
    refusal_->ended(launch_.executable, status);
    taskEnded_ = true;
    finish();
  }

  void finish() {
    if (output_ || !taskEnded_) return;
    if (const auto handler = std::exchange(launch_.onTermination, nullptr)) handler();
  }

  MainQueue& queue_;
  std::shared_ptr<LogRefusal> refusal_;
  ChildProcesses::Launch launch_;
  NSPipe* pipe_ = [NSPipe pipe];
  NSTask* task_ = nil;  // only if it was started, because NSTask raises an exception if another one is to end
  std::unique_ptr<MainQueue::Watch> output_;
  bool taskEnded_ = false;
  Liveness alive_;
};

class TaskProcesses : public ChildProcesses {
 public:
  TaskProcesses(MainQueue& queue, LogRefusal refusal)
      : queue_(queue), refusal_(std::make_shared<LogRefusal>(std::move(refusal))) {}

  std::unique_ptr<ChildProcess> launch(Launch launch) override {
    if (!refusal_->mayStart(launch.executable)) return nullptr;
    auto process = std::make_unique<TaskProcess>(queue_, refusal_, std::move(launch));
    return process->start() ? std::move(process) : nullptr;
  }

 private:
  MainQueue& queue_;
  std::shared_ptr<LogRefusal> refusal_;
};

}  // namespace

std::unique_ptr<ChildProcesses> makeChildProcesses(MainQueue& queue, const Bundle& bundle,
                                                   std::function<void()> onLogRefused) {
  return std::make_unique<TaskProcesses>(queue, LogRefusal(bundle.logTool(), std::move(onLogRefused)));
}

}  // namespace tollvane
