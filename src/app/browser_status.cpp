#include "app/browser_status.h"

namespace tollvane {
namespace {

std::string statusOf(Browser browser, bool connected, const Workspace& workspace) {
  if (connected) return "Connected";
  if (browser == Browser::safari) return "Turn on in Safari Settings, Extensions";
  return browser.isRunning(workspace) ? "Extension not connected" : "Not running";
}

}  // namespace

std::optional<Browser> BrowserNames::browser(std::string_view appName) {
  for (const Browser browser : Browser::allCases)
    if (browser.appName() == appName || systemName(browser) == appName) return browser;
  return std::nullopt;
}

const std::string& BrowserNames::systemName(Browser browser) {
  auto& name = systemNames_[browser];
  if (!name) name = resolver_.appName(browser.bundleID());
  return *name;
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
