// How long to wait before the next attempt to reach the application. Pure; one thread.
#pragma once

#include <algorithm>
#include <chrono>
#include <utility>

namespace tollvane::bridge {

class RetryDelay {
 public:
  using Milliseconds = std::chrono::milliseconds;

  static constexpr Milliseconds kShortest{250};
  static constexpr Milliseconds kLongest{30'000};
  static constexpr Milliseconds kSettle{20};

  // An attempt failed, or a connection ended: wait this long, and longer each time.
  Milliseconds next() {
    if (std::exchange(settling_, false)) return kSettle;
    return std::exchange(delay_, std::min(2 * delay_, kLongest));
  }

  // The application has answered: should it go away, it is expected back.
  void reset() { delay_ = kShortest; }

  // Its socket appeared. There is a moment between the socket's birth and its first answer.
  void appeared() {
    reset();
    settling_ = true;
  }

 private:
  Milliseconds delay_ = kShortest;
  bool settling_ = false;
};

}  // namespace tollvane::bridge
