// Tells when a file appears, however much of the way to it is missing. Costs nothing while nothing happens there: the
// kernel tells (inotify(7)), nobody looks again and again. Brings no event loop: the owner waits for descriptor().
// One thread.
#pragma once

#include <filesystem>
#include <string>

#include "platform/posix/unique_fd.h"

namespace tollvane {

class PathWatch {
 public:
  explicit PathWatch(std::filesystem::path file);

  // Readable when something happened on the way; -1 when the kernel has nothing left to give.
  int descriptor() const { return inotify_.get(); }

  // False when the kernel has no watch left to give.
  bool watching() const { return watch_ >= 0; }

  // Takes what the kernel told. True when the file is there and something was created at its place, or may have been,
  // since the last call. Not for what was there at the beginning.
  bool appeared();

 private:
  void anchor();
  bool takeEvents();

  std::filesystem::path file_;
  UniqueFd inotify_;
  int watch_ = -1;       // of the nearest directory that exists
  std::string awaited_;  // the name in it that leads to the file
};

}  // namespace tollvane
