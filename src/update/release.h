// A release of Tollvane, as the update feed tells of it. Plain values; any thread.
#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace tollvane {

struct Release {
  std::string version;
  std::string url;                    // where to get it; only ever a web page
  std::optional<TimePoint> released;  // midnight UTC of that day
  std::string notes;

  bool operator==(const Release&) const = default;
};

// The release that a feed's body tells of; absent when it is no object with a text under "version". A feed that names
// no page, or something else than a web page, means `downloadPage`.
std::optional<Release> releaseFromFeed(std::string_view body, const std::string& downloadPage);

// Which of two versions is the newer ("greater"), number by number: 1.10 is newer than 1.9, 2.0 is the same as 2. What
// is no number counts as 0.
std::strong_ordering compareVersions(std::string_view a, std::string_view b);

}  // namespace tollvane
