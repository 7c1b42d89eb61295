// The settings window's content in some states of a virtual system, for tests and pictures. The switches work: they
// change the model, which is drawn anew.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/settings_window.h"
#include "settings/login_item.h"
#include "settings/settings_model.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane::test {

class SettingsScenario {
 public:
  // `name` is one of names(). Throws std::invalid_argument for any other name.
  explicit SettingsScenario(const std::string& name);

  static const std::vector<std::string>& names();

  std::string title() const { return welcome_ ? "Welcome" : "Tollvane Settings"; }
  ui::SettingsContent content();

  // `draw` is called once for each change of the model, before it takes effect.
  void onChange(std::function<void()> draw) { model_.objectWillChange = std::move(draw); }

  VirtualPlatform& system() { return system_; }
  SettingsModel& model() { return model_; }

 private:
  VirtualPlatform system_;
  LoginItem loginItem_{system_.login, system_.files, system_.locations};
  SettingsModel model_;
  bool welcome_;
  bool translated_;
};

}  // namespace tollvane::test
