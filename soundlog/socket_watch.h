// Tells when a socket appears in the file system, however much of the way to it is missing. Costs nothing while
// nothing happens there: the kernel tells (inotify(7)), nobody looks again and again. Main thread only.
#pragma once

#include <filesystem>
#include <functional>

#include "loop.h"
#include "support/unique_fd.h"

namespace tollvane::soundlog {

class SocketWatch {
 public:
  // `appeared` is called whenever something is created at `socket`, or may have been. Not for what is there already.
  SocketWatch(std::filesystem::path socket, std::function<void()> appeared);

  // False when the kernel has no watch left to give.
  bool watching() const { return descriptor_ >= 0; }

 private:
  void anchor();
  void readEvents();

  std::filesystem::path socket_;
  std::function<void()> appeared_;
  UniqueFd inotify_;
  int descriptor_ = -1;  // of the watched directory
  std::string awaited_;  // the name in it that leads to the socket
  Watch watch_;          // last: it must not outlive what its handler uses
};

}  // namespace tollvane::soundlog
