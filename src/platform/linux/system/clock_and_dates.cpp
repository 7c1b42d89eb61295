#include "platform/linux/system/clock_and_dates.h"

#include <unicode/simpletz.h>
#include <unicode/smpdtfmt.h>

#include <cstdlib>
#include <ctime>

namespace tollvane {
namespace {

// The locale that setlocale() would give for times. setlocale() is not called, because Qt owns the process's locale.
icu::Locale timeLocale() {
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == '\0') continue;
    const std::string_view name(value);
    if (name == "C" || name == "POSIX" || name.starts_with("C.")) break;
    return icu::Locale::createCanonical(value);
  }
  return icu::Locale::getUS();
}

// The C library notices if the user moves to another time zone; ICU would ask only once.
icu::SimpleTimeZone zoneAt(std::time_t seconds) {
  ::tzset();
  std::tm local{};
  ::localtime_r(&seconds, &local);
  return {static_cast<std::int32_t>(local.tm_gmtoff * 1000), "local"};
}

}  // namespace

Instant SystemClock::steadyNow() const {
  timespec now{};
  ::clock_gettime(CLOCK_BOOTTIME, &now);
  return Instant(std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec));
}

std::string IcuDateFormatter::string(std::string_view pattern, TimePoint time) const {
  UErrorCode status = U_ZERO_ERROR;
  icu::SimpleDateFormat format(icu::UnicodeString::fromUTF8({pattern.data(), static_cast<int>(pattern.size())}),
                               timeLocale(), status);
  if (U_FAILURE(status)) return {};
  const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
  format.setTimeZone(zoneAt(std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time))));
  icu::UnicodeString text;
  format.format(static_cast<UDate>(milliseconds), text);
  std::string result;
  return text.toUTF8String(result);
}

}  // namespace tollvane
