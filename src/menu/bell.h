// The bell in the status bar, as a value: hollow while every sound has been seen, filled while one has not; the tooltip
// tells of the latest sound. Pure; the platform draws it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "model/sound_event.h"
#include "platform/clock.h"

namespace tollvane {

// How the menu and the tooltip write a time of day.
inline constexpr std::string_view timeFormat = "h:mm:ss a";

struct Bell {
  std::string symbolName;  // "bell" or "bell.fill"
  std::string toolTip;

  static constexpr std::string_view accessibilityDescription = "Tollvane";
};

// `events`: the newest first.
Bell bellFor(const std::vector<std::shared_ptr<SoundEvent>>& events, const DateFormatter& dates);

}  // namespace tollvane
