// The way to whatever made a sound: the very tab where it is known, else the application's windows; and where there is
// no way any more, a few words that say why. Every way ends in front of the user: with the source, or with an alert.
// Main thread only.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "browser/browser_link.h"
#include "detect/resolver.h"
#include "model/sound_event.h"
#include "platform/platform.h"
#include "support/liveness.h"

namespace tollvane {

class SourceOpener {
 public:
  SourceOpener(const Platform& platform, const Resolver& resolver, BrowserLink& link);

  void open(const SoundEvent& event);

 private:
  void openTab(std::int64_t tabId, Browser in, const std::string& label);
  void tabFocused(FocusResult result, Browser in, const std::string& label);
  void openApplication(const std::string& app);
  std::optional<RunningApplication> runningApplication(const std::string& app) const;
  void notRunning(const std::string& app);
  void offerToLaunch(const std::string& app, const std::filesystem::path& where);
  void nothingToOpen(const std::string& app);
  void show(const Alert& alert, std::function<void(std::size_t)> answer = nullptr);

  Platform platform_;
  const Resolver& resolver_;
  BrowserLink& link_;
  Liveness alive_;
};

}  // namespace tollvane
