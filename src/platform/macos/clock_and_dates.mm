#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"

namespace tollvane {
namespace {

class SystemClock : public Clock {
 public:
  TimePoint now() const override { return std::chrono::system_clock::now(); }
  Instant steadyNow() const override { return std::chrono::steady_clock::now(); }
};

class FoundationDates : public DateFormatter {
 public:
  // A formatter keeps the locale and the time zone of its making, so each text has its own.
  std::string string(std::string_view pattern, TimePoint time) const override {
    NSDateFormatter* formatter = [[NSDateFormatter alloc] init];
    formatter.dateFormat = nsString(pattern);
    const std::chrono::duration<double> seconds = time.time_since_epoch();
    return utf8([formatter stringFromDate:[NSDate dateWithTimeIntervalSince1970:seconds.count()]]);
  }
};

}  // namespace

std::unique_ptr<Clock> makeClock() { return std::make_unique<SystemClock>(); }
std::unique_ptr<DateFormatter> makeDateFormatter() { return std::make_unique<FoundationDates>(); }

}  // namespace tollvane
