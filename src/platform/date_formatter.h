// Points in time as texts, in the user's current locale and time zone (both may change while the process runs).
// Main thread only.
#pragma once

#include <string>
#include <string_view>

#include "platform/clock.h"

namespace tollvane {

class DateFormatter {
 public:
  virtual ~DateFormatter() = default;

  // `pattern` is a Unicode date pattern (UTS #35), such as "h:mm:ss a".
  virtual std::string string(std::string_view pattern, TimePoint time) const = 0;
};

}  // namespace tollvane
