#include "model/browser.h"

namespace tollvane {
namespace {

struct Row {
  std::string_view rawValue;
  std::string_view bundleID;
  std::string_view appName;
};

// Indexed by Browser::Case. The names are compared with application names as the system gives them: spelling and
// capitals matter.
constexpr std::array<Row, 7> rows = {{
    {"chrome", "com.google.Chrome", "Google Chrome"},
    {"edge", "com.microsoft.edgemac", "Microsoft Edge"},
    {"brave", "com.brave.Browser", "Brave Browser"},
    {"arc", "company.thebrowser.Browser", "Arc"},
    {"chromium", "org.chromium.Chromium", "Chromium"},
    {"firefox", "org.mozilla.firefox", "Firefox"},
    {"safari", "com.apple.Safari", "Safari"},
}};

std::optional<Browser> first(std::string_view Row::*column, std::string_view text) {
  for (Browser browser : Browser::allCases)
    if (rows[browser].*column == text) return browser;
  return std::nullopt;
}

}  // namespace

std::optional<Browser> Browser::fromRawValue(std::string_view rawValue) { return first(&Row::rawValue, rawValue); }

std::optional<Browser> Browser::fromBundleID(std::optional<std::string_view> bundleID) {
  return bundleID ? first(&Row::bundleID, *bundleID) : std::nullopt;
}

std::optional<Browser> Browser::fromAppName(std::string_view appName) { return first(&Row::appName, appName); }

std::string_view Browser::rawValue() const { return rows[value_].rawValue; }
std::string_view Browser::bundleID() const { return rows[value_].bundleID; }
std::string_view Browser::appName() const { return rows[value_].appName; }

bool Browser::isInstalled(const Workspace& workspace) const {
  return workspace.urlForApplication(bundleID()).has_value();
}

bool Browser::isRunning(const Workspace& workspace) const { return !workspace.runningApplications(bundleID()).empty(); }

}  // namespace tollvane
