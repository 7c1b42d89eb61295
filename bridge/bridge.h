// The bridge at work: one browser on two descriptors, one application on a socket that comes and goes, one thread, one
// poll(2). Nothing blocks, and nothing grows: from a side whose other side does not read, nothing more is read.
// An application that takes nothing for patience is left, and sought again like one that went away.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "bridge/relay.h"
#include "bridge/retry_delay.h"
#include "platform/linux/kernel/path_watch.h"
#include "platform/posix/local_socket.h"
#include "platform/posix/unique_fd.h"

namespace tollvane::bridge {

class Bridge {
 public:
  static constexpr std::chrono::seconds patience{5};

  // A side that has this much unread gets no more before it has read some of it.
  static constexpr std::size_t mostWaiting = 256 * 1024;

  struct Browser {
    int input = -1;    // its frames; must not block. Stays the caller's
    int output = -1;   // frames to it; must not block. Stays the caller's
    UniqueFd process;  // readable once it has ended (pidfd_open(2)); may be none
  };

  Bridge(Browser browser, std::string socket, std::string introduction);

  // Returns when the browser has closed either end, or is gone.
  void run();

 private:
  using Clock = std::chrono::steady_clock;

  struct Events;

  Events wait();
  int timeout() const;
  bool serveInput(const Events& events);
  bool serveOutput(const Events& events);
  void serveApplication(const Events& events);
  void serveTimers();

  void seek();
  void leave();
  void flushToApplication();

  Browser browser_;
  std::string socket_;
  Relay relay_;
  PathWatch watch_;
  LocalStream application_;
  RetryDelay delay_;
  std::optional<Clock::time_point> seekAt_;   // while there is no application
  std::optional<Clock::time_point> leaveAt_;  // while the application takes nothing
  std::unique_ptr<char[]> buffer_;
};

}  // namespace tollvane::bridge
