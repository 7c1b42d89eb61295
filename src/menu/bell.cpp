#include "menu/bell.h"

#include <algorithm>
#include <utility>

namespace tollvane {
namespace {

std::string toolTipFor(const SoundEvent& newest, std::ptrdiff_t unseen, const DateFormatter& dates) {
  std::string tip = "Last sound: " + newest.tabLabel().value_or(newest.app);
  tip += " at " + dates.string(timeFormat, newest.date);
  if (unseen > 0) tip += " · " + std::to_string(unseen) + " unseen";
  return tip;
}

std::string_view trouble(Hearing hearing, const Wording& wording) {
  if (hearing == Hearing::noLogTool) return wording.noLogTool;
  if (hearing == Hearing::noSoundServer) return wording.noSoundServer;
  return "";
}

}  // namespace

Bell bellFor(const std::vector<std::shared_ptr<SoundEvent>>& events, const DateFormatter& dates, Hearing hearing,
             const Wording& wording) {
  std::string toolTip(trouble(hearing, wording));
  const auto unseen = std::count_if(events.begin(), events.end(), [](const auto& event) { return !event->seen; });
  if (toolTip.empty()) toolTip = events.empty() ? "Tollvane" : toolTipFor(*events.front(), unseen, dates);
  return {
      .symbolName = unseen > 0 ? "bell.fill" : "bell",
      .toolTip = std::move(toolTip),
  };
}

}  // namespace tollvane
