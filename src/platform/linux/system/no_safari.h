// There is no Safari here: its extension is not enabled.
#pragma once

#include "platform/safari_services.h"

namespace tollvane {

class NoSafari : public SafariServices {
 public:
  void dispatchMessage(std::string_view, std::string_view, std::string_view) override {}
  void getState(std::string_view, std::function<void(std::optional<bool>)> completion) override {
    completion(std::nullopt);
  }
  void showPreferences(std::string_view) override {}
};

}  // namespace tollvane
