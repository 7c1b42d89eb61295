#include "platform/posix/path_watch.h"

#include <fcntl.h>
#include <sys/event.h>

#include <array>
#include <system_error>
#include <utility>

namespace tollvane {
namespace {

// A step that exists but cannot be watched would be looked at without end.
constexpr int mostLooks = 16;

bool isThere(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::symlink_status(path, ignored).type() > std::filesystem::file_type::not_found;
}

// From now on the queue tells of each change in the directory that is open as `folder`, until that is closed.
void watchChanges(int queue, int folder) {
  struct kevent change = {};
  change.ident = static_cast<uintptr_t>(folder);
  change.filter = EVFILT_VNODE;
  change.flags = EV_ADD | EV_CLEAR;
  change.fflags = NOTE_WRITE | NOTE_DELETE | NOTE_RENAME;
  ::kevent(queue, &change, 1, nullptr, 0, nullptr);
}

}  // namespace

PathWatch::PathWatch(std::filesystem::path file) : file_(std::move(file)), events_(::kqueue()) {
  if (events_) anchor();
}

bool PathWatch::appeared() {
  if (!takeEvents()) return false;
  anchor();
  return isThere(file_);
}

// Watches the nearest existing directory on the way to the file. Something may be created on that way between looking
// and watching: then this looks again, one step nearer.
void PathWatch::anchor() {
  for (int looks = 0; looks < mostLooks; ++looks) {
    folder_ = UniqueFd();
    std::filesystem::path step = file_;
    while (!folder_ && step.has_relative_path()) {
      awaited_ = step.filename().string();
      step = step.parent_path();
      folder_ = UniqueFd(::open(step.c_str(), O_EVTONLY | O_DIRECTORY | O_CLOEXEC));
    }
    watch_ = folder_.get();
    if (!folder_) return;
    watchChanges(events_.get(), watch_);
    if (step == file_.parent_path() || !isThere(step / awaited_)) return;
  }
}

// The queue does not tell what has changed in the directory, so every change may have been the awaited one.
bool PathWatch::takeEvents() {
  std::array<struct kevent, 8> events{};
  const timespec atOnce{};
  bool any = false;
  while (::kevent(events_.get(), nullptr, 0, events.data(), static_cast<int>(events.size()), &atOnce) > 0) any = true;
  return any;
}

}  // namespace tollvane
