// Safari's messaging to its extensions. On a system without Safari no extension is enabled. Main thread only.
#pragma once

#include <functional>
#include <optional>
#include <string_view>

namespace tollvane {

class SafariServices {
 public:
  virtual ~SafariServices() = default;

  // `userInfo`: the message, as the text of a JSON object. Fails silently.
  virtual void dispatchMessage(std::string_view name, std::string_view extensionID, std::string_view userInfo) = 0;

  // Whether the extension is turned on; absent if Safari does not say. `completion` may be called on any thread.
  virtual void getState(std::string_view extensionID,
                        std::function<void(std::optional<bool> isEnabled)> completion) = 0;

  virtual void showPreferences(std::string_view extensionID) = 0;
};

}  // namespace tollvane
