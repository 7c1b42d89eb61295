#include "menu/source_opener.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tollvane {
namespace {

// Of several processes of an application, the one that made the sound; if it is not among them, the first.
std::optional<RunningApplication> makerAmong(const std::vector<RunningApplication>& candidates,
                                             const SoundEvent& event) {
  if (candidates.empty()) return std::nullopt;
  const auto found = std::find_if(candidates.begin(), candidates.end(), [&](const RunningApplication& each) {
    return event.maker && each.pid == event.maker->pid && each.startTime == event.maker->startTime;
  });
  return found != candidates.end() ? *found : candidates.front();
}

}  // namespace

void SourceOpener::open(const SoundEvent& event) {
  if (event.browser && event.tabId) {
    openTab(event, *event.browser);
  } else {
    openApplication(event);
  }
}

void SourceOpener::openTab(const SoundEvent& event, Browser in) {
  const std::string label = event.tabLabel().value_or("that tab");
  if (!in.isRunning(workspace_)) {
    const std::string name(in.appName());
    return show({name + " is closed",
                 "The tab that made this sound (" + label + ") is gone because " + name + " has been quit since."});
  }
  // If the tab came forward, its browser must come forward too, even if this object, which shows the alerts, is
  // destroyed.
  link_.focus(*event.tabId, in,
              [workspace = &workspace_, event, tell = alive_.guard([this, in, label](FocusResult result) {
                tabFocused(result, in, label);
              })](FocusResult result, std::string_view bundleID) mutable {
                if (result != FocusResult::focused) return tell(result);
                const auto running = makerAmong(workspace->runningApplications(bundleID), event);
                if (running) workspace->activate(*running, event.tabTitle.value_or(""), [](bool) {});
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

void SourceOpener::openApplication(const SoundEvent& event) {
  const auto running = runningApplication(event);
  if (!running) return notRunning(event.app);
  workspace_.activate(*running, "", alive_.guard([this, event](bool cameForward) {
    if (cameForward) return;
    runningApplication(event) ? noWindow(event.app) : notRunning(event.app);  // it may have ended meanwhile
  }));
}

std::optional<RunningApplication> SourceOpener::runningApplication(const SoundEvent& event) const {
  auto candidates = workspace_.regularApplications();
  std::erase_if(candidates, [&](const auto& each) { return each.localizedName != event.app; });
  return makerAmong(candidates, event);
}

// An application that has closed its windows and still runs shows one if it is started again, as by a launcher.
void SourceOpener::noWindow(const std::string& app) {
  if (const auto where = resolver_.appURL(app)) {
    launch(app, *where);
  } else {
    nothingToOpen(app);
  }
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
       alive_.guard([this, app, where](std::size_t button) {
         if (button == 0) launch(app, where);
       }));
}

void SourceOpener::launch(const std::string& app, const std::filesystem::path& where) {
  workspace_.open(where, alive_.guard([this, app](bool started) {
    if (!started) show({"Can't open " + app, app + " is installed but couldn't be started."});
  }));
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
