#include <map>
#include <string>

#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"

namespace tollvane {
namespace {

class SystemClock : public Clock {
 public:
  TimePoint now() const override { return std::chrono::system_clock::now(); }
  Instant steadyNow() const override { return std::chrono::steady_clock::now(); }
};

// A formatter keeps the locale and the time zone of its making, so all are thrown away when one of those changes.
class FoundationDates : public DateFormatter {
 public:
  FoundationDates() {
    for (NSNotificationName name in @[ NSCurrentLocaleDidChangeNotification, NSSystemTimeZoneDidChangeNotification ])
      [observers_ addObject:[NSNotificationCenter.defaultCenter addObserverForName:name
                                                                            object:nil
                                                                             queue:NSOperationQueue.mainQueue
                                                                        usingBlock:^(NSNotification*) {
                                                                          formatters_.clear();
                                                                        }]];
  }
  ~FoundationDates() override {
    for (id<NSObject> observer in observers_) [NSNotificationCenter.defaultCenter removeObserver:observer];
  }

  std::string string(std::string_view pattern, TimePoint time) const override {
    const std::chrono::duration<double> seconds = time.time_since_epoch();
    return utf8([formatter(pattern) stringFromDate:[NSDate dateWithTimeIntervalSince1970:seconds.count()]]);
  }

 private:
  NSDateFormatter* formatter(std::string_view pattern) const {
    NSDateFormatter* __strong& known = formatters_[std::string(pattern)];
    if (known == nil) {
      known = [[NSDateFormatter alloc] init];
      known.dateFormat = nsString(pattern);
    }
    return known;
  }

  mutable std::map<std::string, NSDateFormatter*> formatters_;
  NSMutableArray<id<NSObject>>* observers_ = [NSMutableArray array];
};

}  // namespace

std::unique_ptr<Clock> makeClock() { return std::make_unique<SystemClock>(); }
std::unique_ptr<DateFormatter> makeDateFormatter() { return std::make_unique<FoundationDates>(); }

}  // namespace tollvane
