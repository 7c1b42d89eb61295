// What time it is, and how the user writes it. A class that measures time is given a Clock, so that tests can move it
// by hand.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace tollvane {

// A point on the wall clock. Counted in whole ticks, never in floating point, so that limits such as "less than 1.5 s"
// are exact.
using TimePoint = std::chrono::system_clock::time_point;

// A point on a clock that never jumps, for measuring how long ago something happened.
using Instant = std::chrono::steady_clock::time_point;

using Duration = std::chrono::nanoseconds;

// Callable from any thread.
class Clock {
 public:
  virtual ~Clock() = default;

  // The wall clock, as a person reads it. It may jump when the user or the network sets it.
  virtual TimePoint now() const = 0;

  // The steady clock: advances evenly with real time, also while the machine sleeps, and is never set. Its times can
  // only be compared with each other.
  virtual Instant steadyNow() const = 0;
};

// Points in time as texts, in the user's current locale and time zone (both may change while the process runs).
// Main thread only.
class DateFormatter {
 public:
  virtual ~DateFormatter() = default;

  // `pattern`: a Unicode date pattern (UTS #35), such as "h:mm:ss a".
  virtual std::string string(std::string_view pattern, TimePoint time) const = 0;
};

}  // namespace tollvane
