#include "app/browser_names.h"

namespace tollvane {

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

}  // namespace tollvane
