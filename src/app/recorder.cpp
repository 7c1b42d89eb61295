#include "app/recorder.h"

#include <algorithm>
#include <map>
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

// Far more than anybody sees of it.
constexpr std::size_t longestText = 1000;

std::string shown(const std::optional<std::string>& text) {
  constexpr std::size_t bytesOfOne = 16;  // a letter may carry marks without end
  if (!text) return "";
  return text::withoutControls(text::prefix(std::string_view(*text).substr(0, bytesOfOne * longestText), longestText));
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
  if (awaitsTab && *tabless == Browser::safari) {
    ask(event, *tabless);
  } else if (awaitsTab) {
    queue_.after(askingDelay, alive_.guard([this, event, in = *tabless] { ask(event, in); }));
  }

  events.insert(events.begin(), event);
  if (events.size() > maxEvents) events.resize(maxEvents);

  const Duration delay = awaitsTab ? Duration(matchWindow) : Duration::zero();
  unwritten_.push_back({event, awaitsTab ? tabless : std::nullopt});
  queue_.after(delay, alive_.guard([this, event] { write(event); }));
  changed();
}

void Recorder::write(const std::shared_ptr<SoundEvent>& event) {
  const auto found = waitingFor(event);
  if (found == unwritten_.end()) return;
  history_.append(*event);
  unwritten_.erase(found);
}

std::vector<Recorder::Waiting>::iterator Recorder::waitingFor(const std::shared_ptr<SoundEvent>& event) {
  return std::find_if(unwritten_.begin(), unwritten_.end(), [&](const Waiting& each) { return each.event == event; });
}

void Recorder::finish() {
  while (!unwritten_.empty()) write(unwritten_.front().event);
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
  pendingTabs.push_back(std::move(tab));
  dropOldReports(*from);
  awaitOverdueReports();
}

// A flood of reports harms no other browser: of each, no more than the list of sounds can show are kept.
void Recorder::dropOldReports(Browser of) {
  const TimePoint now = clock_.now();
  std::erase_if(pendingTabs, [&](const PendingTab& other) { return now - other.date > reportLifetime; });
  const auto isOf = [&](const PendingTab& other) { return other.browser == of; };
  if (std::count_if(pendingTabs.begin(), pendingTabs.end(), isOf) > static_cast<std::ptrdiff_t>(maxEvents))
    pendingTabs.erase(std::find_if(pendingTabs.begin(), pendingTabs.end(), isOf));
}

Recorder::PendingTab Recorder::read(const Message& report, Browser from) const {
  return {
      .date = clock_.now(),
      .browser = from,
      .title = shown(json::text(report, "title")),
      .host = shown(json::text(report, "host")),
      .tabId = json::wholeNumber(report, "tabId"),
      .received = clock_.steadyNow(),
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
  const auto isAnswered = [&](const std::shared_ptr<SoundEvent>& event) {
    return std::any_of(answered_.begin(), answered_.end(), [&](const auto& each) { return each.lock() == event; });
  };
  // Asking the system for names takes a look at all processes, and is needed only for sounds that are older than usual.
  BrowserNames names(resolver_);
  const auto browserOf = [&](const std::shared_ptr<SoundEvent>& event) {
    const auto waiting = waitingFor(event);
    if (waiting != unwritten_.end()) return waiting->browser;
    return window > matchWindow ? names.browser(event->app) : std::nullopt;
  };
  const auto match = std::find_if(events.begin(), events.end(), [&](const auto& event) {
    return !event->hasTab() && report.date - event->date < window && !isAnswered(event) &&
           browserOf(event) == report.browser;
  });
  if (match == events.end()) return false;
  give(**match, report);
  return true;
}

// One timer, for the oldest report that no sound has taken.
void Recorder::awaitOverdueReports() {
  const auto oldest = std::find_if(pendingTabs.begin(), pendingTabs.end(), [](const auto& tab) { return !tab.used; });
  if (oldest == pendingTabs.end() || std::exchange(reportsAreAwaited_, true)) return;
  queue_.after(oldest->received + reportPatience - clock_.steadyNow(), alive_.guard([this] {
    reportsAreAwaited_ = false;
    makeSoundsOfOverdueReports();
    awaitOverdueReports();
  }));
}

// A report that no sound took within `reportPatience` becomes a sound.
void Recorder::makeSoundsOfOverdueReports() {
  std::vector<PendingTab> overdue;
  for (PendingTab& report : pendingTabs) {
    if (report.used || clock_.steadyNow() - report.received < reportPatience) continue;
    report.used = true;
    overdue.push_back(report);
  }
  std::map<std::string, std::string> names;  // the system's names of editions
  for (const PendingTab& report : overdue) {
    const auto [name, isNew] = names.try_emplace(report.edition);
    if (isNew) name->second = resolver_.appName(report.edition);
    auto event = std::make_shared<SoundEvent>(report.date, name->second, kind::startedPlayingAudio);
    give(*event, report);
    record(std::move(event));
  }
}

}  // namespace tollvane
