// The recent sounds, and the pairing of browser sounds with the tabs that made them.
//
// Sounds come from the watcher, reports of tabs from the browser extensions, in either order and up to seconds apart. A
// browser sound gets the tab that was reported within 4 seconds of it; a report that finds no sound within 2.5 seconds
// becomes a sound of its own. Extensions report a tab only when it begins to be heard, so that its next sound may have
// no report: about a sound that has no tab after 0.3 seconds its browser is asked. Every sound goes to the history; a
// browser's sound without a tab goes there 4 seconds late, so that its line has the tab that is reported meanwhile.
// Nothing fails: a malformed report has empty texts and no id. Main thread only.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/history.h"
#include "browser/audible_questions.h"
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
  static constexpr std::chrono::milliseconds askingDelay{300};

  struct PendingTab {
    TimePoint date;
    Browser browser;
    std::string title;
    std::string host;
    std::optional<std::int64_t> tabId;
    std::string edition = {};  // the bundle identifier of the browser's edition; empty if only the browser is known
    bool used = false;
    bool ownSoundWasDropped = false;  // its sound was probably a repetition to the watcher, and the next one is another
    Instant received{};
  };

  Recorder(MainQueue& queue, const Clock& clock, const Resolver& resolver, History& history)
      : queue_(queue), clock_(clock), resolver_(resolver), history_(history) {}

  std::function<void()> onChange;  // called after every change of `events`

  // Asks that browser. Safari answers with a tab report, the others through `completion`.
  std::function<void(Browser in, AudibleQuestions::Completion completion)> askWhichTabIsAudible;

  std::vector<std::shared_ptr<SoundEvent>> events;  // the newest first, at most maxEvents
  std::vector<PendingTab> pendingTabs;              // the oldest first

  void record(std::shared_ptr<SoundEvent> event);

  // Writes the lines to the history that still wait for their tab. To be called before the process ends.
  void finish();

  // `from`: the browser that reports; absent if unknown. `edition`: its bundle identifier, if it is known that exactly.
  // `report`: has the members "title", "host" and "tabId".
  void tabReport(std::optional<Browser> from, const Message& report, std::string_view edition = "");

  // Which browser the event's application is, by its name alone: the browser's own name, or the one that the system
  // gives it.
  std::optional<Browser> browser(const SoundEvent& event) const;

 private:
  struct Waiting {
    std::shared_ptr<SoundEvent> event;
    std::optional<Browser> browser;  // absent if the event needs no tab
  };

  void ask(const std::shared_ptr<SoundEvent>& about, Browser in);
  void answered(const std::shared_ptr<SoundEvent>& about, Browser in, const AudibleTabs& tabs);
  void adoptWaitingReport(SoundEvent& event, Browser browser);
  bool fillWaitingSound(const PendingTab& report, Duration window);
  bool isAnsweredAlready(const PendingTab& report);
  bool followsASound(const PendingTab& report) const;
  PendingTab read(const Message& report, Browser from) const;
  void dropOldReports(Browser of);
  void awaitOverdueReports();
  void makeSoundsOfOverdueReports();
  void write(const std::shared_ptr<SoundEvent>& event);
  std::vector<Waiting>::iterator waitingFor(const std::shared_ptr<SoundEvent>& event);
  void changed() const {
    if (onChange) onChange();
  }

  MainQueue& queue_;
  const Clock& clock_;
  const Resolver& resolver_;
  History& history_;
  std::vector<std::weak_ptr<const SoundEvent>> answered_;  // the recent sounds about which their browsers have answered
  std::vector<Waiting> unwritten_;  // the sounds whose lines are not in the history yet, the oldest first
  bool reportsAreAwaited_ = false;
  Liveness alive_;
};

}  // namespace tollvane
