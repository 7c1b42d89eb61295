// Takes the user to the source of a sound: to its tab if that is known, else to the application's windows. If neither
// can be reached any more, an alert says why. So the user always sees something: the source or an alert. Main thread
// only.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "browser/browser_link.h"
#include "detect/resolver.h"
#include "model/sound_event.h"
#include "platform/application.h"
#include "platform/wording.h"
#include "platform/workspace.h"
#include "support/liveness.h"

namespace tollvane {

class SourceOpener {
 public:
  // All arguments must outlive it.
  SourceOpener(Workspace& workspace, Application& application, Alerts& alerts, const Wording& wording,
               const Resolver& resolver, BrowserLink& link)
      : workspace_(workspace),
        application_(application),
        alerts_(alerts),
        wording_(wording),
        resolver_(resolver),
        link_(link) {}

  void open(const SoundEvent& event);

 private:
  void openTab(const SoundEvent& event, Browser in);
  void tabFocused(FocusResult result, Browser in, const std::string& label);
  void openApplication(const SoundEvent& event);
  std::optional<RunningApplication> runningApplication(const SoundEvent& event) const;
  void noWindow(const std::string& app);
  void notRunning(const std::string& app);
  void offerToLaunch(const std::string& app, const std::filesystem::path& where);
  void launch(const std::string& app, const std::filesystem::path& where);
  void nothingToOpen(const std::string& app);
  void show(const Alert& alert, std::function<void(std::size_t)> answer = nullptr);

  Workspace& workspace_;
  Application& application_;
  Alerts& alerts_;
  const Wording& wording_;
  const Resolver& resolver_;
  BrowserLink& link_;
  Liveness alive_;
};

}  // namespace tollvane
