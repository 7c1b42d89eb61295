#include "menu/bell.h"

#include <algorithm>

namespace tollvane {
namespace {

std::string toolTipFor(const SoundEvent& newest, std::ptrdiff_t unseen, const DateFormatter& dates) {
  std::string tip = "Last sound: " + newest.tabLabel().value_or(newest.app);
  tip += " at " + dates.string(timeFormat, newest.date);
  if (unseen > 0) tip += " · " + std::to_string(unseen) + " unseen";
  return tip;
}

}  // namespace

Bell bellFor(const std::vector<std::shared_ptr<SoundEvent>>& events, const DateFormatter& dates) {
  const auto unseen = std::count_if(events.begin(), events.end(), [](const auto& event) { return !event->seen; });
  return {
      .symbolName = unseen > 0 ? "bell.fill" : "bell",
      .toolTip = events.empty() ? "Tollvane" : toolTipFor(*events.front(), unseen, dates),
  };
}

}  // namespace tollvane
