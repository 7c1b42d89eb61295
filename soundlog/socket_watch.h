// Tells when a socket appears in the file system, however much of the way to it is missing: an AppearanceWatch on the
// event loop. Main thread only.
#pragma once

#include <filesystem>
#include <functional>

#include "loop.h"
#include "platform/linux/system/appearance_watch.h"

namespace tollvane::soundlog {

class SocketWatch {
 public:
  // `appeared` is called whenever something is created at `socket`, or may have been. Not for what is there already.
  SocketWatch(std::filesystem::path socket, std::function<void()> appeared);

  // False when the kernel has no watch left to give.
  bool watching() const { return file_.watching(); }

 private:
  AppearanceWatch file_;
  std::function<void()> appeared_;
  Watch watch_;  // last: it must not outlive what its handler uses
};

}  // namespace tollvane::soundlog
