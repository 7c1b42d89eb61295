// What time it is, and how the user writes it.
#pragma once

#include "platform/clock.h"

namespace tollvane {

class SystemClock : public Clock {
 public:
  TimePoint now() const override { return std::chrono::system_clock::now(); }

  // It advances while the machine sleeps, which std::chrono::steady_clock does not.
  Instant steadyNow() const override;
};

// Dates through ICU, in the language of LC_TIME and in the machine's current time zone. Main thread only.
class IcuDateFormatter : public DateFormatter {
 public:
  std::string string(std::string_view pattern, TimePoint time) const override;
};

}  // namespace tollvane
