#include "platform/posix/path_watch.h"

#include <fcntl.h>
#include <sys/event.h>

#include <array>

namespace tollvane {

UniqueFd PathWatch::makeQueue() { return UniqueFd(::kqueue()); }

// The queue tells of each change in the directory until the directory is closed.
void PathWatch::watch(const std::filesystem::path& directory) {
  folder_ = UniqueFd(::open(directory.c_str(), O_EVTONLY | O_DIRECTORY | O_CLOEXEC));
  watch_ = folder_.get();
  if (!folder_) return;
  struct kevent change;
  EV_SET(&change, watch_, EVFILT_VNODE, EV_ADD | EV_CLEAR, NOTE_WRITE | NOTE_DELETE | NOTE_RENAME, 0, nullptr);
  ::kevent(events_.get(), &change, 1, nullptr, 0, nullptr);
}

void PathWatch::unwatch() {
  folder_ = UniqueFd();
  watch_ = -1;
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
