#include "support/virtual_platform.h"

#include <array>
#include <ctime>
#include <stdexcept>

namespace tollvane::test {

std::string VirtualDates::string(std::string_view pattern, TimePoint time) const {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 64> text{};
  std::size_t length = 0;
  if (pattern == "h:mm:ss a") length = std::strftime(text.data(), text.size(), "%-I:%M:%S %p", &parts);
  if (pattern == "yyyy-MM-dd HH:mm:ss") length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
  if (length == 0) throw std::invalid_argument("a pattern that nobody uses");
  return {text.data(), length};
}

}  // namespace tollvane::test
