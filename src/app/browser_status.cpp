#include "app/browser_status.h"

#include <algorithm>
#include <utility>

namespace tollvane {
namespace {

std::string statusOf(Browser browser, bool connected, const Workspace& workspace) {
  if (connected) return "Connected";
  if (browser == Browser::safari) return "Turn on in Safari Settings, Extensions";
  return browser.isRunning(workspace) ? "Extension not connected" : "Not running";
}

}  // namespace

std::optional<Browser> BrowserNames::browser(std::string_view appName) {
  for (const Browser browser : Browser::allCases) {
    if (browser.appName() == appName) return browser;
    const auto& names = systemNames(browser);
    if (std::find(names.begin(), names.end(), appName) != names.end()) return browser;
  }
  return std::nullopt;
}

const std::vector<std::string>& BrowserNames::systemNames(Browser browser) {
  auto& names = systemNames_[browser];
  if (!names.empty()) return names;
  for (const std::string_view edition : browser.editions())
    for (auto& name : resolver_.appNames(edition)) names.push_back(std::move(name));
  return names;
}

std::vector<BrowserRow> browserRows(const BrowserLink& link, const Workspace& workspace) {
  std::vector<BrowserRow> rows;
  for (const Browser browser : Browser::allCases) {
    if (!browser.isInstalled(workspace)) continue;
    const bool connected = link.isConnected(browser);
    rows.push_back({std::string(browser.rawValue()), std::string(browser.appName()),
                    statusOf(browser, connected, workspace), connected});
  }
  return rows;
}

}  // namespace tollvane
