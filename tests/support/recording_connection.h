// A connection that keeps the messages sent to its extension.
#pragma once

#include <vector>

#include "browser/browser_connection.h"
#include "support/json_value.h"

namespace tollvane::test {

class RecordingConnection : public BrowserConnection {
 public:
  explicit RecordingConnection(Browser browser) {
    bundleID = browser.bundleID();
    extensionVersion = "1.0";
  }
  void send(const Message& message) override { sent.push_back(message); }

  std::vector<Message> sent;
};

}  // namespace tollvane::test
