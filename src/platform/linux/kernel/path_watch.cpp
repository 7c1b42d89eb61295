#include "platform/posix/path_watch.h"

#include <sys/inotify.h>

#include <array>
#include <cstddef>
#include <system_error>
#include <utility>

namespace tollvane {
namespace {

constexpr std::uint32_t appearance = IN_CREATE | IN_MOVED_TO;
constexpr std::uint32_t directoryGone = IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT;

// A step that exists but cannot be watched (no permission, not a directory) would be looked at without end.
constexpr int mostLooks = 16;

bool isThere(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::symlink_status(path, ignored).type() > std::filesystem::file_type::not_found;
}

}  // namespace

PathWatch::PathWatch(std::filesystem::path file)
    : file_(std::move(file)), events_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
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
    if (watch_ >= 0) inotify_rm_watch(events_.get(), watch_);
    watch_ = -1;
    std::filesystem::path step = file_;
    while (watch_ < 0 && step.has_relative_path()) {
      awaited_ = step.filename().string();
      step = step.parent_path();
      watch_ = inotify_add_watch(events_.get(), step.c_str(), appearance | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR);
    }
    if (watch_ < 0 || step == file_.parent_path() || !isThere(step / awaited_)) return;
  }
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
