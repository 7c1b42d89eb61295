// The bell in the status bar, as a value: filled while there is a sound that the user has not seen, else hollow; the
// tooltip names the latest sound, or says that no sound can be noticed. Pure; the platform draws it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "detect/watcher.h"
#include "model/sound_event.h"
#include "platform/clock.h"
#include "platform/wording.h"

namespace tollvane {

// The format of a time of day in the menu and in the tooltip.
inline constexpr std::string_view timeFormat = "h:mm:ss a";

struct Bell {
  std::string symbolName;  // "bell" or "bell.fill"
  std::string toolTip;

  static constexpr std::string_view accessibilityDescription = "Tollvane";
};

// `events`: the newest first.
Bell bellFor(const std::vector<std::shared_ptr<SoundEvent>>& events, const DateFormatter& dates, Hearing hearing,
             const Wording& wording);

}  // namespace tollvane
