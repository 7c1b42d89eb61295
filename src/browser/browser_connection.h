// One browser extension that Tollvane can talk to. Connections are compared by their address, never by value. Main
// thread only.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "model/browser.h"
#include "platform/clock.h"

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
  std::optional<TimePoint> lastReport;          // when it last reported a tab that sounds

  std::optional<Browser> browser() const { return Browser::fromBundleID(bundleID); }
  bool isReady() const { return extensionVersion.has_value(); }

  // The tabs that this extension has reported. Only the last ones are remembered: more than the sounds that are kept.
  void remember(std::int64_t tabId) {
    if (hasReported(tabId)) return;
    if (reported_.size() == mostRemembered) reported_.erase(reported_.begin());
    reported_.push_back(tabId);
  }
  bool hasReported(std::int64_t tabId) const {
    return std::find(reported_.begin(), reported_.end(), tabId) != reported_.end();
  }

 private:
  static constexpr std::size_t mostRemembered = 64;

  std::vector<std::int64_t> reported_;
};

}  // namespace tollvane
