// The recent sounds, and the pairing of browser sounds with the tabs that made them.
//
// Sounds come from the watcher, reports of tabs from the browser extensions, in either order and up to seconds apart. A
// browser sound gets the tab that was reported within 4 seconds of it; a report that finds no sound within 2.5 seconds
// becomes a sound of its own. Every sound goes to the history; a browser's sound without a tab goes there 4 seconds
// late, so that its line has the tab that is reported meanwhile. Nothing fails: a malformed report has empty texts and
// no id. Main thread only.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/history.h"
#include "browser/browser_connection.h"
#include "detect/resolver.h"
#include "model/browser.h"
#include "model/sound_event.h"
#include "platform/clock.h"
#include "platform/main_queue.h"
#include "support/liveness.h"

namespace tollvane {

class Recorder {
 public:
  static constexpr std::size_t maxEvents = 50;
  static constexpr std::chrono::milliseconds matchWindow{4000};
  static constexpr std::chrono::milliseconds reportPatience{2500};
  static constexpr std::chrono::milliseconds reportLifetime{15000};

  struct PendingTab {
    TimePoint date;
    Browser browser;
    std::string title;
    std::string host;
    std::optional<std::int64_t> tabId;
    bool used = false;
  };

  Recorder(MainQueue& queue, const Clock& clock, const Resolver& resolver, History& history)
      : queue_(queue), clock_(clock), resolver_(resolver), history_(history) {}

  std::function<void()> onChange;                        // called after every change of `events`
  std::function<void(Browser in)> askWhichTabIsAudible;  // asks that browser, which answers with a tab report

  std::vector<std::shared_ptr<SoundEvent>> events;  // the newest first, at most maxEvents
  std::vector<PendingTab> pendingTabs;              // the oldest first

  void record(std::shared_ptr<SoundEvent> event);

  // `from`: the browser that reports; absent if unknown. `report`: has the members "title", "host" and "tabId".
  void tabReport(std::optional<Browser> from, const Message& report);

  // Which browser the event's application is, by its name alone: the browser's own name, or the one that the system
  // gives it.
  std::optional<Browser> browser(const SoundEvent& event) const;

 private:
  void adoptWaitingReport(SoundEvent& event, Browser browser);
  bool fillWaitingSound(const PendingTab& report);
  void makeSoundOf(const PendingTab& report);
  void changed() const {
    if (onChange) onChange();
  }

  MainQueue& queue_;
  const Clock& clock_;
  const Resolver& resolver_;
  History& history_;
  Liveness alive_;
};

}  // namespace tollvane
