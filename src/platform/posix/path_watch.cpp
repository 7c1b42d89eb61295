#include "platform/posix/path_watch.h"

#include <system_error>
#include <utility>

namespace tollvane {
namespace {

// A step that exists but cannot be watched (no permission, not a directory) would be looked at without end.
constexpr int mostLooks = 16;

bool isThere(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::symlink_status(path, ignored).type() > std::filesystem::file_type::not_found;
}

}  // namespace

PathWatch::PathWatch(std::filesystem::path file) : file_(std::move(file)), events_(makeQueue()) {
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
    unwatch();
    std::filesystem::path step = file_;
    while (watch_ < 0 && step.has_relative_path()) {
      awaited_ = step.filename().string();
      step = step.parent_path();
      watch(step);
    }
    if (watch_ < 0 || step == file_.parent_path() || !isThere(step / awaited_)) return;
  }
}

}  // namespace tollvane
