// Tollvane's end of the conversation with its browser extensions: who is connected, and what is asked of them.
// One for the life of the process; whoever owns it sets the callbacks once. Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "browser/browser_connection.h"

namespace tollvane {

class BrowserLink {
 public:
  BrowserLink();

  // Called with every report that a tab makes sound.
  std::function<void(const BrowserConnection& from, const Message& report)> onTab;

  // Supplies the settings that every extension is sent; at first none.
  std::function<Message()> settings;

  // In the order in which they came.
  std::vector<std::shared_ptr<BrowserConnection>> connections;

  // Asks every ready extension of that browser for its audible tabs. They answer through onTab.
  void askWhichTabIsAudible(Browser in);
};

}  // namespace tollvane
