// One browser extension that Tollvane can talk to. Connections are compared by their address, never by value. Main
// thread only.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "model/browser.h"

namespace tollvane {

// The messages between Tollvane and its extensions: JSON objects with a text under "type".
using Message = nlohmann::json;

class BrowserConnection {
 public:
  virtual ~BrowserConnection() = default;

  // Fails silently.
  virtual void send(const Message& message) = 0;

  std::optional<std::string> bundleID;          // of the browser; absent until it is known
  std::optional<std::string> extensionVersion;  // absent until the extension has introduced itself

  std::optional<Browser> browser() const { return Browser::fromBundleID(bundleID); }
  bool isReady() const { return extensionVersion.has_value(); }
};

}  // namespace tollvane
