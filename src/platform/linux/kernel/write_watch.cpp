#include "platform/linux/kernel/write_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace tollvane {

WriteWatch::WriteWatch() : inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), complete_(static_cast<bool>(inotify_)) {}

void WriteWatch::add(const std::string& folder) {
  if (!inotify_) return;
  const int watch = inotify_add_watch(inotify_.get(), folder.c_str(), IN_MODIFY | IN_ONLYDIR);
  // A folder that is gone again has no files.
  if (watch < 0 && errno != ENOENT && errno != ENOTDIR) complete_ = false;
}

bool WriteWatch::takeWrites() {
  bool any = false;
  alignas(inotify_event) std::array<char, 4096> buffer;  // not cleared, because most calls read nothing
  while (inotify_ && ::read(inotify_.get(), buffer.data(), buffer.size()) > 0) any = true;
  return any;
}

}  // namespace tollvane
