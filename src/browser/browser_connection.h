// One browser extension that Tollvane can talk to. Identity matters: connections are compared by address, never by
// value. Main thread only.
#pragma once

#include <optional>
#include <string>

#include "browser/messages.h"
#include "model/browser.h"

namespace tollvane {

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
