// Which browser an application is, and how the browsers are linked. Main thread only.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "browser/browser_link.h"
#include "detect/resolver.h"
#include "model/browser.h"
#include "platform/workspace.h"
#include "settings/settings_model.h"

namespace tollvane {

// Which browser an application is, by its name alone: the browser's own name, or one that the system gives to one of
// its editions. Asks the system for each name once, when it is first needed, because that costs a look at all
// processes. Keep an object for one question or a series of them, not for longer.
class BrowserNames {
 public:
  explicit BrowserNames(const Resolver& resolver) : resolver_(resolver) {}

  std::optional<Browser> browser(std::string_view appName);

 private:
  const std::vector<std::string>& systemNames(Browser browser);

  const Resolver& resolver_;
  std::array<std::vector<std::string>, Browser::allCases.size()> systemNames_;  // empty: not asked for yet
};

// The state of each installed browser's extension, for the settings window.
std::vector<BrowserRow> browserRows(const BrowserLink& link, const Workspace& workspace);

}  // namespace tollvane
