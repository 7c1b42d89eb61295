#include "update/release.h"

#include <algorithm>
#include <vector>

#include "support/ascii.h"
#include "support/json.h"
#include "support/json_value.h"
#include "support/text.h"

namespace tollvane {
namespace {

bool allDigits(std::string_view text) { return !text.empty() && std::all_of(text.begin(), text.end(), ascii::isDigit); }

// A component's digits without leading zeros: the longer is the larger, so no number is too large.
std::string_view component(std::string_view text) {
  if (!allDigits(text)) return "";
  text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
  return text;
}

std::vector<std::string_view> components(std::string_view version) {
  std::vector<std::string_view> parts;
  while (!version.empty())
    if (const auto part = ascii::takePart(version, '.'); !part.empty()) parts.push_back(component(part));
  return parts;
}

std::optional<TimePoint> day(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
  const auto year = text.substr(0, 4), month = text.substr(5, 2), dayOfMonth = text.substr(8, 2);
  if (!allDigits(year) || !allDigits(month) || !allDigits(dayOfMonth)) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(*ascii::number<int>(year)),
                                         std::chrono::month(*ascii::number<unsigned>(month)),
                                         std::chrono::day(*ascii::number<unsigned>(dayOfMonth))};
  // A point in time reaches from 1677 to 2262 only.
  const auto earliest = std::chrono::ceil<std::chrono::days>(TimePoint::min());
  const auto latest = std::chrono::floor<std::chrono::days>(TimePoint::max());
  const std::chrono::sys_days midnight = date;
  if (!date.ok() || midnight < earliest || midnight > latest) return std::nullopt;
  return midnight;
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
      .url = url && text::isWebPage(*url) ? *url : downloadPage,
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
    if (const auto order = left[i].compare(right[i]) <=> 0; order != 0) return order;  // not every library has <=> here
  }
  return std::strong_ordering::equal;
}

}  // namespace tollvane
