#include "app/recorder.h"

#include <algorithm>
#include <utility>

#include "app/browser_status.h"
#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {
namespace {

void give(SoundEvent& event, const Recorder::PendingTab& tab) {
  event.browser = tab.browser;
  event.tabTitle = tab.title;
  event.tabHost = tab.host;
  event.tabId = tab.tabId;
}

}  // namespace

std::optional<Browser> Recorder::browser(const SoundEvent& event) const {
  return BrowserNames(resolver_).browser(event.app);
}

void Recorder::record(std::shared_ptr<SoundEvent> event) {
  // A sound that has its tab already needs no report.
  const auto tabless = event->hasTab() ? std::nullopt : browser(*event);
  if (tabless) adoptWaitingReport(*event, *tabless);
  const bool awaitsTab = tabless && !event->hasTab();
  // The other browsers' extensions report without being asked.
  if (awaitsTab && *tabless == Browser::safari && askWhichTabIsAudible) askWhichTabIsAudible(*tabless);

  events.insert(events.begin(), event);
  if (events.size() > maxEvents) events.resize(maxEvents);

  const Duration delay = awaitsTab ? Duration(matchWindow) : Duration::zero();
  queue_.after(delay, alive_.guard([this, event] { history_.append(*event); }));
  changed();
}

// Gives the event the newest unused report of `browser` that is near enough in time.
void Recorder::adoptWaitingReport(SoundEvent& event, Browser browser) {
  const auto match = std::find_if(pendingTabs.rbegin(), pendingTabs.rend(), [&](const PendingTab& report) {
    return !report.used && report.browser == browser && std::chrono::abs(event.date - report.date) < matchWindow;
  });
  if (match == pendingTabs.rend()) return;
  match->used = true;
  give(event, *match);
}

void Recorder::tabReport(std::optional<Browser> from, const Message& report) {
  if (!from) return;
  const PendingTab tab{
      .date = clock_.now(),
      .browser = *from,
      .title = json::text(report, "title").value_or(""),
      .host = json::text(report, "host").value_or(""),
      .tabId = json::wholeNumber(report, "tabId"),
  };
  if (fillWaitingSound(tab)) return changed();

  pendingTabs.push_back(tab);
  std::erase_if(pendingTabs, [&](const PendingTab& other) { return tab.date - other.date > reportLifetime; });
  queue_.after(reportPatience, alive_.guard([this, tab] { makeSoundOf(tab); }));
}

// Gives the report to the newest sound of its browser that has no tab yet.
bool Recorder::fillWaitingSound(const PendingTab& report) {
  BrowserNames names(resolver_);
  const auto match = std::find_if(events.begin(), events.end(), [&](const auto& event) {
    return !event->hasTab() && report.date - event->date < matchWindow && names.browser(event->app) == report.browser;
  });
  if (match == events.end()) return false;
  give(**match, report);
  return true;
}

// Called when `reportPatience` is over: makes a sound of the report, unless a sound took it meanwhile.
void Recorder::makeSoundOf(const PendingTab& report) {
  const auto waiting = std::find_if(pendingTabs.begin(), pendingTabs.end(),
                                    [&](const PendingTab& tab) { return tab.date == report.date && !tab.used; });
  if (waiting == pendingTabs.end()) return;
  waiting->used = true;
  auto event = std::make_shared<SoundEvent>(report.date, resolver_.appName(report.browser.bundleID()),
                                            kind::startedPlayingAudio);
  give(*event, report);
  record(std::move(event));
}

}  // namespace tollvane
