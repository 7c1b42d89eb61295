// The clocks of the machine.
#pragma once

#include "platform/clock.h"

namespace tollvane {

class SystemClock : public Clock {
 public:
  TimePoint now() const override { return std::chrono::system_clock::now(); }
  Instant steadyNow() const override { return std::chrono::steady_clock::now(); }
};

}  // namespace tollvane
