// One browser extension that Tollvane can talk to. Identity matters: connections are compared by address, never by
// value. Main thread only.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "model/browser.h"

namespace tollvane {

// What Tollvane and its extensions say to each other: JSON objects, with a text under "type".
using Message = nlohmann::json;

class BrowserConnection {
 public:
  virtual ~BrowserConnection() = default;

  // Fails in silence.
  virtual void send(const Message& message) = 0;

  std::optional<std::string> bundleID;          // of the browser, once it is known
  std::optional<std::string> extensionVersion;  // once the extension has introduced itself

  std::optional<Browser> browser() const { return Browser::fromBundleID(bundleID); }
  bool isReady() const { return extensionVersion.has_value(); }
};

}  // namespace tollvane
