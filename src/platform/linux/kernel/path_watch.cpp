#include "platform/posix/path_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace tollvane {
namespace {

constexpr std::uint32_t appearance = IN_CREATE | IN_MOVED_TO;
constexpr std::uint32_t directoryGone = IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT;

}  // namespace

UniqueFd PathWatch::makeQueue() { return UniqueFd(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)); }

void PathWatch::watch(const std::filesystem::path& directory) {
  watch_ = inotify_add_watch(events_.get(), directory.c_str(), appearance | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR);
}

void PathWatch::unwatch() {
  if (watch_ >= 0) inotify_rm_watch(events_.get(), std::exchange(watch_, -1));
}

// Whether one of the events is about the way to the file.
bool PathWatch::takeEvents() {
  bool nearer = false;
  alignas(inotify_event) std::array<char, 4096> buffer{};
  ssize_t size = 0;
  while ((size = read(events_.get(), buffer.data(), buffer.size())) > 0) {
    for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
      at += sizeof(inotify_event) + event->len;
      const bool overflow = event->mask & IN_Q_OVERFLOW;
      const bool ours = event->wd == watch_;
      const bool created = ours && event->len > 0 && (event->mask & appearance) && awaited_ == event->name;
      nearer = nearer || overflow || created || (ours && (event->mask & directoryGone));
    }
  }
  return nearer;
}

}  // namespace tollvane
