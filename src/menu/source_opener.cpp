#include "menu/source_opener.h"

#include <utility>

namespace tollvane {

void SourceOpener::open(const SoundEvent& event) {
  if (event.browser && event.tabId) {
    openTab(*event.tabId, *event.browser, event.tabLabel().value_or("that tab"));
  } else {
    openApplication(event.app);
  }
}

void SourceOpener::openTab(std::int64_t tabId, Browser in, const std::string& label) {
  if (!in.isRunning(workspace_)) {
    const std::string name(in.appName());
    return show({name + " is closed",
                 "The tab that made this sound (" + label + ") is gone because " + name + " has been quit since."});
  }
  // If the tab came forward, its browser must come forward too, even if this object, which shows the alerts, is
  // destroyed.
  link_.focus(tabId, in, [in, workspace = &workspace_, tell = alive_.guard([this, in, label](FocusResult result) {
                tabFocused(result, in, label);
              })](FocusResult result, std::string_view bundleID) mutable {
    if (result != FocusResult::focused) return tell(result);
    const auto running = workspace->runningApplications(bundleID);
    if (!running.empty()) workspace->activate(running.front(), [](bool) {});
  });
}

void SourceOpener::tabFocused(FocusResult result, Browser in, const std::string& label) {
  const std::string name(in.appName());
  if (result == FocusResult::tabClosed) {
    show({"That tab is closed", "The " + name + " tab that made this sound (" + label +
                                    ") has been closed, so there is nothing to go back to."});
  } else {
    show({"Can't reach " + name, "The Tollvane extension in " + name +
                                     " isn't responding, so the tab can't be brought forward. Check that the "
                                     "extension is installed and turned on."});
  }
}

void SourceOpener::openApplication(const std::string& app) {
  const auto running = runningApplication(app);
  if (!running) return notRunning(app);
  workspace_.activate(*running, alive_.guard([this, app](bool cameForward) {
    if (cameForward) return;
    runningApplication(app) ? nothingToOpen(app) : notRunning(app);  // it may have ended meanwhile
  }));
}

std::optional<RunningApplication> SourceOpener::runningApplication(const std::string& app) const {
  for (auto& candidate : workspace_.runningApplications())
    if (candidate.localizedName == app && candidate.activationPolicy == ActivationPolicy::regular) return candidate;
  return std::nullopt;
}

void SourceOpener::notRunning(const std::string& app) {
  if (const auto where = resolver_.appURL(app)) {
    offerToLaunch(app, *where);
  } else {
    nothingToOpen(app);
  }
}

void SourceOpener::offerToLaunch(const std::string& app, const std::filesystem::path& where) {
  show({app + " is closed", app + " made this sound but isn't open anymore.", {"Open " + app, "OK"}},
       [workspace = &workspace_, where](std::size_t button) {
         if (button == 0) workspace->open(where);
       });
}

void SourceOpener::nothingToOpen(const std::string& app) {
  show({"Nothing to open", app + std::string(wording_.isABackgroundPart)});
}

void SourceOpener::show(const Alert& alert, std::function<void(std::size_t)> answer) {
  application_.activateIgnoringOtherApps();
  alerts_.show(
      alert, answer ? std::move(answer) : [](std::size_t) {});
}

}  // namespace tollvane
