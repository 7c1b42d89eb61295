// One sound that some application made.
//
// Shared: the list of recent sounds, the menu and the tab matcher hold the same object and change it, so it is always
// behind a std::shared_ptr. Main thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "model/browser.h"
#include "platform/clock.h"
#include "platform/workspace.h"

namespace tollvane {

// What happened: the only three values of SoundEvent::kind. Users read them in the menu and in the history.
namespace kind {
inline constexpr std::string_view startedPlayingAudio = "started playing audio";
inline constexpr std::string_view alertSound = "alert sound";
inline constexpr std::string_view notificationSound = "notification sound";
}  // namespace kind

class SoundEvent {
 public:
  SoundEvent(TimePoint when, std::string_view who, std::string_view what) : date(when), app(who), kind(what) {}

  const TimePoint date;    // when the sound was noticed
  const std::string app;   // display name of the application credited with it
  const std::string kind;  // one of the three above

  // The process of the application that made it, as it ran then; absent if it is unknown.
  std::optional<RunningApplication> maker;

  // The browser tab that played it; often known only after the sound.
  std::optional<std::string> tabTitle;
  std::optional<std::string> tabHost;
  std::optional<std::int64_t> tabId;  // the browser's own identifier of the tab
  std::optional<Browser> browser;     // the browser that owns the tab

  bool seen = false;  // whether the user has seen this sound in the menu

  // Whether anything is known about a tab. An empty title or host counts; `browser` alone does not.
  bool hasTab() const { return tabId || tabTitle || tabHost; }

  // A short text for the tab, "Inbox  (mail.example.org)"; absent if there is no tab. A title of more than 48
  // user-perceived characters is cut to 47 and "…".
  std::optional<std::string> tabLabel() const;
};

}  // namespace tollvane
