#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <utility>

#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"
#include "platform/posix/unique_fd.h"

namespace tollvane {
namespace {

class SourceWatch : public MainQueue::Watch {
 public:
  explicit SourceWatch(dispatch_source_t source) : source_(source) {}
  ~SourceWatch() override { dispatch_source_cancel(source_); }

 private:
  dispatch_source_t source_;
};

// The system may report to a source that was cancelled until its cancel handler has run, and must find the descriptor
// open. So each source has a descriptor of its own, which that handler closes.
std::unique_ptr<MainQueue::Watch> watch(dispatch_source_type_t type, UniqueFd own, uintptr_t events,
                                        MainQueue::Block block) {
  if (!own) return nullptr;
  dispatch_source_t source =
      dispatch_source_create(type, static_cast<uintptr_t>(own.get()), events, dispatch_get_main_queue());
  if (source == nil) return nullptr;
  const auto descriptor = std::make_shared<UniqueFd>(std::move(own));
  dispatch_source_set_event_handler(source, ^{
    block();
  });
  dispatch_source_set_cancel_handler(source, ^{
    descriptor->reset();
  });
  dispatch_activate(source);
  return std::make_unique<SourceWatch>(source);
}

UniqueFd copyOf(int descriptor) { return UniqueFd(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0)); }

class DispatchQueue : public MainQueue {
 public:
  DispatchQueue() {
    // Strict, because the system would let the timers of an application without windows come late.
    timer_ = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, DISPATCH_TIMER_STRICT, dispatch_get_main_queue());
    dispatch_source_set_timer(timer_, DISPATCH_TIME_FOREVER, DISPATCH_TIME_FOREVER, 0);
    dispatch_source_set_event_handler(timer_, ^{
      runDue();
    });
    dispatch_activate(timer_);
  }
  ~DispatchQueue() override { dispatch_source_cancel(timer_); }

  void post(Block block) override { onMainQueue(std::move(block)); }

  void after(Duration delay, Block block) override {
    waiting_.emplace(std::chrono::steady_clock::now() + delay, std::move(block));
    setTimer();
  }

  std::unique_ptr<Watch> watchReadable(int descriptor, Block block) override {
    return watch(DISPATCH_SOURCE_TYPE_READ, copyOf(descriptor), 0, std::move(block));
  }

  std::unique_ptr<Watch> watchWritable(int descriptor, Block block) override {
    return watch(DISPATCH_SOURCE_TYPE_WRITE, copyOf(descriptor), 0, std::move(block));
  }

  std::unique_ptr<Watch> watchDirectory(const std::filesystem::path& directory, Block block) override {
    constexpr uintptr_t changes = DISPATCH_VNODE_WRITE | DISPATCH_VNODE_DELETE | DISPATCH_VNODE_RENAME;
    UniqueFd opened(::open(directory.c_str(), O_EVTONLY | O_DIRECTORY | O_CLOEXEC));
    return watch(DISPATCH_SOURCE_TYPE_VNODE, std::move(opened), changes, std::move(block));
  }

 private:
  // The timer counts the time that the computer is awake; the steady clock counts all time. Whatever the timer does,
  // only the clock says what is due.
  void runDue() {
    const Instant now = std::chrono::steady_clock::now();
    while (!waiting_.empty() && waiting_.begin()->first <= now) {
      const Block block = std::move(waiting_.begin()->second);
      waiting_.erase(waiting_.begin());
      block();
    }
    setTimer();
  }

  void setTimer() {
    if (waiting_.empty()) return;
    const Duration left = std::max(Duration(waiting_.begin()->first - std::chrono::steady_clock::now()), Duration(0));
    dispatch_source_set_timer(timer_, dispatch_time(DISPATCH_TIME_NOW, left.count()), DISPATCH_TIME_FOREVER, 0);
  }

  dispatch_source_t timer_;
  std::multimap<Instant, Block> waiting_;
};

}  // namespace

std::unique_ptr<MainQueue> makeMainQueue() { return std::make_unique<DispatchQueue>(); }

}  // namespace tollvane
