// How long to wait before the next attempt to reach the application. Pure; one thread.
#pragma once

#include <algorithm>
#include <chrono>
#include <utility>

namespace tollvane::bridge {

class RetryDelay {
 public:
  using Milliseconds = std::chrono::milliseconds;

  static constexpr Milliseconds shortest{250};
  static constexpr Milliseconds longest{30'000};
  static constexpr Milliseconds settle{20};

  // An attempt failed, or a connection ended: wait this long, and longer each time.
  Milliseconds next() {
    if (std::exchange(settling_, false)) return settle;
    return std::exchange(delay_, std::min(2 * delay_, longest));
  }

  // The application has answered: should it go away, it is expected back.
  void reset() { delay_ = shortest; }

  // Its socket appeared. There is a moment between the socket's birth and its first answer.
  void appeared() {
    reset();
    settling_ = true;
  }

 private:
  Milliseconds delay_ = shortest;
  bool settling_ = false;
};

}  // namespace tollvane::bridge
