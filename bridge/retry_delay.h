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

  // To be called after a failed attempt or a lost connection. Returns how long to wait, longer each time up to
  // `longest`.
  Milliseconds next() {
    if (std::exchange(settling_, false)) return settle;
    return std::exchange(delay_, std::min(2 * delay_, longest));
  }

  // To be called when the application has answered: if it goes away now, it is expected back soon.
  void reset() { delay_ = shortest; }

  // To be called when the application's socket appeared. It may not be ready to answer yet, so the next wait is
  // `settle`.
  void appeared() {
    reset();
    settling_ = true;
  }

 private:
  Milliseconds delay_ = shortest;
  bool settling_ = false;
};

}  // namespace tollvane::bridge
