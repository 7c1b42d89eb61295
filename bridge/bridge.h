// Connects one browser (two file descriptors) with the application (a socket that may come and go). One thread, one
// poll(2) loop. Nothing blocks, and no queue grows without bound: while one side does not read, the bridge reads
// nothing more from the other side. If the application accepts nothing for `patience`, the bridge disconnects and then
// connects again, as after any loss of the application.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bridge/relay.h"
#include "bridge/retry_delay.h"
#include "platform/posix/local_socket.h"
#include "platform/posix/path_watch.h"
#include "platform/posix/unique_fd.h"

namespace tollvane::bridge {

class Bridge {
 public:
  static constexpr std::chrono::seconds patience{5};

  // While this many bytes wait for one side, nothing more is read from the other side.
  static constexpr std::size_t mostWaiting = 256 * 1024;

  struct Browser {
    int input = -1;    // frames from the browser; must not block. Stays the caller's
    int output = -1;   // frames to the browser; must not block. Stays the caller's
    UniqueFd process;  // readable once the browser has ended (pidfd_open(2)); may hold no descriptor
  };

  // `sockets`: where the application may listen, the best place first.
  Bridge(Browser browser, const std::vector<std::string>& sockets, Relay relay);

  // Returns when the browser has closed either descriptor or has ended.
  void run();

 private:
  using Clock = std::chrono::steady_clock;

  struct Events;
  struct Place {
    std::string socket;
    PathWatch watch;
  };

  Events wait();
  bool somethingAppeared();
  int timeout() const;
  bool serveInput(const Events& events);
  bool serveOutput(const Events& events);
  void serveApplication(const Events& events);
  void serveTimers();

  void seek();
  void leave();
  void flushToApplication();

  Browser browser_;
  Relay relay_;
  std::vector<Place> places_;
  LocalStream application_;
  RetryDelay delay_;
  std::optional<Clock::time_point> seekAt_;   // when to try to connect again; set while there is no application
  std::optional<Clock::time_point> leaveAt_;  // when `patience` ends; set while bytes wait for the application
  std::unique_ptr<char[]> buffer_;
};

}  // namespace tollvane::bridge
