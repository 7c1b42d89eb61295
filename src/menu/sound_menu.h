// The menu under the bell, as a value: the five newest sounds, the older ones in a submenu, Tollvane's commands, and
// perhaps, under one browser sound, the offer of the extension that would name its tab. Pure: made from the arguments
// only. Opening it marks nothing as seen. Main thread only, because of what it is made from.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "model/sound_event.h"
#include "platform/clock.h"
#include "platform/menu.h"

namespace tollvane {

// How many sounds the menu itself shows; the others are in the submenu.
inline constexpr std::size_t topCount = 5;

// What choosing an item does. The sender's representedObject is a std::shared_ptr<SoundEvent> for openSource, and the
// browser's raw value (a std::string) for openExtensionStore.
struct SoundMenuActions {
  MenuItem::Action openSource;
  MenuItem::Action openExtensionStore;
  MenuItem::Action markAllSeen;
  MenuItem::Action openHistory;
  MenuItem::Action clearList;
  MenuItem::Action openUpdate;
  MenuItem::Action checkUpdates;
  MenuItem::Action openSettings;
  MenuItem::Action quit;
};

struct SoundMenuContents {
  const std::vector<std::shared_ptr<SoundEvent>>& events;  // the newest first
  bool suggestExtension = true;
  bool hasStores = true;  // whether there is a site that leads to the browsers' stores
  std::function<std::optional<Browser>(const SoundEvent&)> browser;  // which browser the event's application is
  std::function<bool(Browser)> isConnected;                          // whether that browser's extension is connected
  std::optional<std::string> availableVersion;                       // version of a newer release
};

Menu soundMenu(const SoundMenuContents& contents, const SoundMenuActions& actions, const DateFormatter& dates);

// The entry of one sound.
MenuItem menuItem(const std::shared_ptr<SoundEvent>& event, const MenuItem::Action& openSource,
                  const DateFormatter& dates);

}  // namespace tollvane
