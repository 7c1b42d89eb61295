#include "update/release.h"

#include <algorithm>
#include <vector>

#include "support/json.h"
#include "support/json_value.h"
#include "support/web_page.h"

namespace tollvane {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool allDigits(std::string_view text) { return !text.empty() && std::all_of(text.begin(), text.end(), isDigit); }

// A component's digits without leading zeros: the longer is the larger, so no number is too large.
std::string_view component(std::string_view text) {
  if (!allDigits(text)) return "";
  text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
  return text;
}

std::vector<std::string_view> components(std::string_view version) {
  std::vector<std::string_view> parts;
  while (!version.empty()) {
    const auto end = std::min(version.find('.'), version.size());
    if (end > 0) parts.push_back(component(version.substr(0, end)));
    version.remove_prefix(std::min(end + 1, version.size()));
  }
  return parts;
}

std::optional<TimePoint> day(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
  const auto number = [](std::string_view digits) {
    int value = 0;
    for (const char c : digits) value = 10 * value + (c - '0');
    return value;
  };
  const auto year = text.substr(0, 4), month = text.substr(5, 2), dayOfMonth = text.substr(8, 2);
  if (!allDigits(year) || !allDigits(month) || !allDigits(dayOfMonth)) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(number(year)),
                                         std::chrono::month(static_cast<unsigned>(number(month))),
                                         std::chrono::day(static_cast<unsigned>(number(dayOfMonth)))};
  if (!date.ok()) return std::nullopt;
  return std::chrono::sys_days(date);
}

}  // namespace

std::optional<Release> releaseFromFeed(std::string_view body, const std::string& downloadPage) {
  const auto feed = json::object(body);
  if (!feed) return std::nullopt;
  const auto version = json::text(*feed, "version");
  if (!version) return std::nullopt;
  const auto url = json::text(*feed, "url");
  const auto released = json::text(*feed, "released");
  return Release{
      .version = *version,
      .url = url && isWebPage(*url) ? *url : downloadPage,
      .released = released ? day(*released) : std::nullopt,
      .notes = json::text(*feed, "notes").value_or(""),
  };
}

std::strong_ordering compareVersions(std::string_view a, std::string_view b) {
  auto left = components(a);
  auto right = components(b);
  const auto length = std::max(left.size(), right.size());
  left.resize(length);
  right.resize(length);
  for (std::size_t i = 0; i < length; ++i) {
    if (const auto order = left[i].size() <=> right[i].size(); order != 0) return order;
    if (const auto order = left[i] <=> right[i]; order != 0) return order;
  }
  return std::strong_ordering::equal;
}

}  // namespace tollvane
