// The clocks of the machine.
#pragma once

#include <ctime>

#include "platform/clock.h"

namespace tollvane {

class SystemClock : public Clock {
 public:
  TimePoint now() const override { return std::chrono::system_clock::now(); }
  // Goes on while the machine sleeps, as the library's own steady clock does not.
  Instant steadyNow() const override {
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return Instant(std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec));
  }
};

}  // namespace tollvane
