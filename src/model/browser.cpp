#include "model/browser.h"

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
  return bundleID ? first(&BrowserEdition::bundleID, *bundleID) : std::nullopt;
}

std::optional<Browser> Browser::fromAppName(std::string_view appName) { return first(&BrowserEdition::name, appName); }

std::string_view Browser::rawValue() const { return mainReleases()[value_]->family; }
std::string_view Browser::bundleID() const { return mainReleases()[value_]->bundleID; }
std::string_view Browser::appName() const { return mainReleases()[value_]->name; }

bool Browser::isInstalled(const Workspace& workspace) const {
  return workspace.urlForApplication(bundleID()).has_value();
}

bool Browser::isRunning(const Workspace& workspace) const { return !workspace.runningApplications(bundleID()).empty(); }

}  // namespace tollvane
