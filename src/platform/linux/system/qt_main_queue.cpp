#include "platform/linux/system/qt_main_queue.h"

#include <sys/inotify.h>

#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <array>
#include <utility>

#include "platform/posix/unique_fd.h"

namespace tollvane {
namespace {

class DescriptorWatch : public MainQueue::Watch {
 public:
  DescriptorWatch(int descriptor, QSocketNotifier::Type type, MainQueue::Block block)
      : notifier_(new QSocketNotifier(descriptor, type)) {
    // The block may destroy this watch, and with it the block itself. So it is kept during the call.
    QObject::connect(notifier_, &QSocketNotifier::activated, notifier_,
                     [shared = std::make_shared<MainQueue::Block>(std::move(block))] {
                       const auto kept = shared;  // NOLINT(performance-unnecessary-copy-initialization)
                       (*kept)();
                     });
  }
  ~DescriptorWatch() override {
    notifier_->setEnabled(false);
    notifier_->disconnect();
    notifier_->deleteLater();
  }

 private:
  QSocketNotifier* notifier_;
};

class DirectoryWatch : public MainQueue::Watch {
 public:
  DirectoryWatch(UniqueFd inotify, MainQueue::Block block)
      : inotify_(std::move(inotify)),
        readable_(inotify_.get(), QSocketNotifier::Read, [this, block = std::move(block)] {
          drain();
          block();
        }) {}

 private:
  // It does not matter which entries have changed.
  void drain() const {
    alignas(inotify_event) std::array<char, 4096> events;
    while (::read(inotify_.get(), events.data(), events.size()) > 0) {
    }
  }

  UniqueFd inotify_;
  DescriptorWatch readable_;
};

}  // namespace

void QtMainQueue::post(Block block) { QMetaObject::invokeMethod(&receiver_, std::move(block), Qt::QueuedConnection); }

void QtMainQueue::after(Duration delay, Block block) {
  using std::chrono::milliseconds;
  // Rounded up and precise, because Qt's coarse timers may fire five per cent early.
  const auto wait = std::max(std::chrono::ceil<milliseconds>(delay), milliseconds::zero());
  QTimer::singleShot(wait, Qt::PreciseTimer, &receiver_, std::move(block));
}

std::unique_ptr<MainQueue::Watch> QtMainQueue::watchReadable(int descriptor, Block block) {
  return std::make_unique<DescriptorWatch>(descriptor, QSocketNotifier::Read, std::move(block));
}

std::unique_ptr<MainQueue::Watch> QtMainQueue::watchWritable(int descriptor, Block block) {
  return std::make_unique<DescriptorWatch>(descriptor, QSocketNotifier::Write, std::move(block));
}

std::unique_ptr<MainQueue::Watch> QtMainQueue::watchDirectory(const std::filesystem::path& directory, Block block) {
  UniqueFd inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  constexpr std::uint32_t entries =
      IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
  if (!inotify || ::inotify_add_watch(inotify.get(), directory.c_str(), entries) < 0) return nullptr;
  return std::make_unique<DirectoryWatch>(std::move(inotify), std::move(block));
}

}  // namespace tollvane
