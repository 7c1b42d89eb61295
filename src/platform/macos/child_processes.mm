#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/macos/decisions/log_refusal.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"

namespace tollvane {
namespace {

// One started program. The end is reported when both the program and its output have ended, in whatever order.
class TaskRun : public std::enable_shared_from_this<TaskRun> {
 public:
  TaskRun(ChildProcesses::Launch launch, std::function<void(int status)> onExit)
      : launch_(std::move(launch)), onExit_(std::move(onExit)) {}

  bool start() {
    task_ = [[NSTask alloc] init];
    NSMutableArray<NSString*>* arguments = [NSMutableArray array];
    for (const std::string& argument : launch_.arguments) [arguments addObject:nsString(argument)];
    NSPipe* pipe = [NSPipe pipe];
    task_.executableURL = fileURL(launch_.executable);
    task_.arguments = arguments;
    task_.standardOutput = pipe;
    task_.standardError = NSFileHandle.fileHandleWithNullDevice;
    const std::weak_ptr<TaskRun> weak = weak_from_this();
    task_.terminationHandler = ^(NSTask* ended) {
      const bool byItself = ended.terminationReason == NSTaskTerminationReasonExit;
      const int status = byItself ? ended.terminationStatus : 0;
      onMainQueue([weak, status] {
        if (const auto run = weak.lock()) run->taskEnded(status);
      });
    };
    if (![task_ launchAndReturnError:nil]) {
      task_ = nil;
      return false;
    }
    readFrom(pipe);
    return true;
  }

  void removeTerminationHandler() { launch_.onTermination = nullptr; }

  // NSTask raises an exception if it was never started, so a task is kept only if it was.
  void terminate() { [task_ terminate]; }

  void abandon() {
    launch_ = {};
    task_.terminationHandler = nil;
    [task_ terminate];
    endReading();
  }

 private:
  void readFrom(NSPipe* pipe) {
    NSFileHandle* handle = pipe.fileHandleForReading;
    const int descriptor = handle.fileDescriptor;
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    output_ = dispatch_source_create(DISPATCH_SOURCE_TYPE_READ, static_cast<uintptr_t>(descriptor), 0,
                                     dispatch_get_main_queue());
    const std::weak_ptr<TaskRun> weak = weak_from_this();
    dispatch_source_set_event_handler(output_, ^{
      if (const auto run = weak.lock()) run->readSome(descriptor);
    });
    dispatch_source_set_cancel_handler(output_, ^{
      [handle closeAndReturnError:nil];
    });
    dispatch_activate(output_);
  }

  void readSome(int descriptor) {
    std::array<char, 65536> bytes;
    const ssize_t size = ::read(descriptor, bytes.data(), bytes.size());
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (size > 0) {
      if (launch_.onOutput) launch_.onOutput({bytes.data(), static_cast<std::size_t>(size)});
      return;
    }
    endReading();
    finish();
  }

  void endReading() {
    if (output_ != nil) dispatch_source_cancel(std::exchange(output_, nil));
  }

  void taskEnded(int status) {
    onExit_(status);
    taskEnded_ = true;
    finish();
  }

  void finish() {
    if (output_ != nil || !taskEnded_) return;
    if (const auto handler = std::exchange(launch_.onTermination, nullptr)) handler();
  }

  ChildProcesses::Launch launch_;
  std::function<void(int status)> onExit_;
  NSTask* task_ = nil;
  dispatch_source_t output_ = nil;
  bool taskEnded_ = false;
};

class TaskProcess : public ChildProcess {
 public:
  explicit TaskProcess(std::shared_ptr<TaskRun> run) : run_(std::move(run)) {}
  ~TaskProcess() override { run_->abandon(); }

  void removeTerminationHandler() override { run_->removeTerminationHandler(); }
  void terminate() override { run_->terminate(); }

 private:
  std::shared_ptr<TaskRun> run_;
};

class TaskProcesses : public ChildProcesses {
 public:
  TaskProcesses(std::filesystem::path logTool, std::function<void()> onLogRefused)
      : refusal_(std::make_shared<LogRefusal>(std::move(logTool))), onLogRefused_(std::move(onLogRefused)) {}

  std::unique_ptr<ChildProcess> launch(Launch launch) override {
    if (!refusal_->mayStart(launch.executable)) return nullptr;
    const auto onExit = [refusal = refusal_, tell = onLogRefused_, program = launch.executable](int status) {
      if (refusal->ended(program, status) && tell) tell();
    };
    const auto run = std::make_shared<TaskRun>(std::move(launch), onExit);
    if (!run->start()) return nullptr;
    return std::make_unique<TaskProcess>(run);
  }

 private:
  std::shared_ptr<LogRefusal> refusal_;
  std::function<void()> onLogRefused_;
};

}  // namespace

std::unique_ptr<ChildProcesses> makeChildProcesses(const Bundle& bundle, std::function<void()> onLogRefused) {
  return std::make_unique<TaskProcesses>(bundle.logTool(), std::move(onLogRefused));
}

}  // namespace tollvane
