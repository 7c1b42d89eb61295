// Tells when a file appears, even if some of its parent directories are missing. Costs nothing while nothing happens:
// the kernel reports changes (inotify(7), kqueue(2)), and nothing is polled. There is no event loop here: the owner
// waits for descriptor(). One thread. What asks the kernel is written for each system.
#pragma once

#include <filesystem>
#include <string>

#include "platform/posix/unique_fd.h"

namespace tollvane {

class PathWatch {
 public:
  explicit PathWatch(std::filesystem::path file);

  // Readable if something happened on the way to the file; -1 if the kernel has no more descriptors to give.
  int descriptor() const { return events_.get(); }

  // False if the kernel has no watch left to give.
  bool watching() const { return watch_ >= 0; }

  // Takes what the kernel has reported. True if the file exists and something was, or may have been, created at its
  // place since the last call. Not for what existed at the beginning.
  bool appeared();

 private:
  void anchor();

  // Each system's own. watch() sets watch_, to -1 if the directory cannot be watched; unwatch() sets it to -1.
  static UniqueFd makeQueue();
  void watch(const std::filesystem::path& directory);
  void unwatch();
  bool takeEvents();

  std::filesystem::path file_;
  UniqueFd events_;
  UniqueFd folder_;      // the nearest directory that exists, on systems that watch what is open
  int watch_ = -1;       // of that directory
  std::string awaited_;  // the name in that directory that leads to the file
};

}  // namespace tollvane
