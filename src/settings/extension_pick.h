// One browser whose extension the user may add, and the way to its store page. Values; main thread only.
#pragma once

#include <array>
#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "model/browser.h"
#include "platform/bundle.h"
#include "platform/main_queue.h"
#include "platform/workspace.h"

namespace tollvane {

struct ExtensionPick {
  // Between one store page and the next, so that each browser has the time to come forward.
  static constexpr std::chrono::milliseconds stagger{1500};

  static const std::array<Browser, 3> offered;

  Browser browser;
  bool installed = false;
  bool connected = false;

  bool operator==(const ExtensionPick&) const = default;

  std::string_view id() const { return browser.rawValue(); }

  // The page of Tollvane's site that leads to the browser's store.
  std::string storeLink(const Bundle& bundle) const;

  // The page in the bundle that tells how to add the extension by hand.
  static constexpr std::string_view guide = "Extensions/adding.html";

  // Opens each pick's store page in its own browser, one after the other; in the default browser where that fails. If
  // there is no site that leads to the stores, the guide opens instead.
  static void open(const std::vector<ExtensionPick>& picks, const Bundle& bundle, MainQueue& queue,
                   Workspace& workspace);
};

inline constexpr std::array<Browser, 3> ExtensionPick::offered = {Browser::chrome, Browser::edge, Browser::firefox};

}  // namespace tollvane
