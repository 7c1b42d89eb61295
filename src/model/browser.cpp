#include "model/browser.h"

#include <algorithm>

#include "catalogue/browsers.h"

namespace tollvane {
namespace {

using MainReleases = std::array<const BrowserEdition*, Browser::allCases.size()>;

// Indexed by Browser::Case.
const MainReleases& mainReleases() {
  static const MainReleases found = [] {
    MainReleases releases{};
    auto next = releases.begin();
    for (const BrowserEdition& edition : browserEditions())
      if (edition.isMainRelease()) *next++ = &edition;
    return releases;
  }();
  return found;
}

std::optional<Browser> first(std::string_view BrowserEdition::*column, std::string_view text) {
  for (const Browser browser : Browser::allCases)
    if (mainReleases()[browser]->*column == text) return browser;
  return std::nullopt;
}

}  // namespace

std::optional<Browser> Browser::fromRawValue(std::string_view rawValue) {
  return first(&BrowserEdition::family, rawValue);
}

std::optional<Browser> Browser::fromBundleID(std::optional<std::string_view> bundleID) {
  const BrowserEdition* const edition = bundleID ? editionOfBundle(*bundleID) : nullptr;
  return edition && !edition->family.empty() ? fromRawValue(edition->family) : std::nullopt;
}

std::optional<Browser> Browser::fromAppName(std::string_view appName) { return first(&BrowserEdition::name, appName); }

std::string_view Browser::rawValue() const { return mainReleases()[value_]->family; }
std::string_view Browser::bundleID() const { return mainReleases()[value_]->bundleID; }
std::string_view Browser::appName() const { return mainReleases()[value_]->name; }

std::vector<std::string_view> Browser::editions() const {
  std::vector<std::string_view> bundleIDs;
  for (const BrowserEdition& edition : browserEditions())
    if (edition.family == rawValue()) bundleIDs.push_back(edition.bundleID);
  return bundleIDs;
}

bool Browser::isInstalled(const Workspace& workspace) const {
  const auto all = editions();
  return std::any_of(all.begin(), all.end(),
                     [&](std::string_view edition) { return workspace.urlForApplication(edition).has_value(); });
}

bool Browser::isRunning(const Workspace& workspace) const {
  const auto all = editions();
  return std::any_of(all.begin(), all.end(),
                     [&](std::string_view edition) { return !workspace.runningApplications(edition).empty(); });
}

}  // namespace tollvane
