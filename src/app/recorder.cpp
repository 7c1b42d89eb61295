#include "app/recorder.h"

#include <algorithm>
#include <utility>

#include "app/browser_status.h"
#include "detect/watcher.h"
#include "support/json.h"
#include "support/json_value.h"
#include "support/text.h"

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
  // The other browsers' extensions report most sounds without being asked.
  if (awaitsTab)
    *tabless == Browser::safari
        ? ask(event, *tabless)
        : queue_.after(askingDelay, alive_.guard([this, event, in = *tabless] { ask(event, in); }));

  events.insert(events.begin(), event);
  if (events.size() > maxEvents) events.resize(maxEvents);

  const Duration delay = awaitsTab ? Duration(matchWindow) : Duration::zero();
  queue_.after(delay, alive_.guard([this, event] { history_.append(*event); }));
  changed();
}

void Recorder::ask(const std::shared_ptr<SoundEvent>& about, Browser in) {
  if (about->hasTab() || !askWhichTabIsAudible) return;
  askWhichTabIsAudible(in, alive_.guard([this, about, in](const AudibleTabs& tabs) { answered(about, in, tabs); }));
}

// If several tabs are audible, each of them may have made the sound: no later report is a better guess. If none is, the
// tab that made it may only be about to be reported.
void Recorder::answered(const std::shared_ptr<SoundEvent>& about, Browser in, const AudibleTabs& tabs) {
  if (about->hasTab() || tabs.count == 0) return;
  std::erase_if(answered_, [&](const auto& each) {
    const auto event = each.lock();
    return !event || clock_.now() - event->date >= matchWindow;
  });
  answered_.push_back(about);
  if (!tabs.only) return;
  give(*about, read(*tabs.only, in));
  changed();
}

// Gives the event the newest unused report of `browser` that is near enough in time.
void Recorder::adoptWaitingReport(SoundEvent& event, Browser browser) {
  const auto match = std::find_if(pendingTabs.rbegin(), pendingTabs.rend(), [&](const PendingTab& report) {
    if (report.used || report.browser != browser) return false;
    if (report.ownSoundWasDropped && event.date - report.date >= askingDelay) return false;
    return std::chrono::abs(event.date - report.date) < matchWindow;
  });
  if (match == pendingTabs.rend()) return;
  match->used = true;
  give(event, *match);
}

void Recorder::tabReport(std::optional<Browser> from, const Message& report, std::string_view edition) {
  if (!from) return;
  PendingTab tab = read(report, *from);
  tab.edition = edition.empty() ? from->bundleID() : edition;
  // A browser that has just started may have played long before its extension ran.
  const bool mayBeLate = json::isTrue(report, "restored");
  if (fillWaitingSound(tab, mayBeLate ? reportLifetime : matchWindow)) return changed();
  if (isAnsweredAlready(tab)) return;

  tab.ownSoundWasDropped = followsASound(tab);
  pendingTabs.push_back(tab);
  std::erase_if(pendingTabs, [&](const PendingTab& other) { return tab.date - other.date > reportLifetime; });
  queue_.after(reportPatience, alive_.guard([this, tab] { makeSoundOf(tab); }));
}

Recorder::PendingTab Recorder::read(const Message& report, Browser from) const {
  return {
      .date = clock_.now(),
      .browser = from,
      .title = text::withoutControls(json::text(report, "title").value_or("")),
      .host = text::withoutControls(json::text(report, "host").value_or("")),
      .tabId = json::wholeNumber(report, "tabId"),
  };
}

// A browser may answer sooner than it reports of itself: then the sound of the report has its tab already.
bool Recorder::isAnsweredAlready(const PendingTab& report) {
  const auto match = std::find_if(answered_.begin(), answered_.end(), [&](const auto& each) {
    const auto event = each.lock();
    return event && report.tabId && event->tabId == report.tabId && event->browser == report.browser &&
           report.date - event->date < matchWindow;
  });
  if (match == answered_.end()) return false;
  answered_.erase(match);
  return true;
}

// Whether a sound of the same browser came so shortly before it that the watcher took its own sound for a repetition.
bool Recorder::followsASound(const PendingTab& report) const {
  return std::any_of(events.begin(), events.end(), [&](const auto& event) {
    const Duration passed = report.date - event->date;
    return event->browser == report.browser && event->kind == kind::startedPlayingAudio && passed >= Duration::zero() &&
           passed < Watcher::repeatWindow;
  });
}

// Gives the report to the newest sound of its browser that has no tab yet, and whose tab can still be told.
bool Recorder::fillWaitingSound(const PendingTab& report, Duration window) {
  BrowserNames names(resolver_);
  const auto isAnswered = [&](const std::shared_ptr<SoundEvent>& event) {
    return std::any_of(answered_.begin(), answered_.end(), [&](const auto& each) { return each.lock() == event; });
  };
  const auto match = std::find_if(events.begin(), events.end(), [&](const auto& event) {
    return !event->hasTab() && !isAnswered(event) && report.date - event->date < window &&
           names.browser(event->app) == report.browser;
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
  auto event = std::make_shared<SoundEvent>(report.date, resolver_.appName(report.edition), kind::startedPlayingAudio);
  give(*event, report);
  record(std::move(event));
}

}  // namespace tollvane
