// The content of the settings window, which is also the welcome window, as a value made from the model. Pure but for
// the controls' bindings, which change the model; the model outlives what is made from it. Main thread only.
#pragma once

#include <functional>
#include <string>

#include "platform/settings_window.h"
#include "platform/wording.h"
#include "settings/settings_model.h"

namespace tollvane {

struct SettingsView {
  SettingsModel& model;
  bool welcome = false;
  std::string version;
  std::function<void()> showExtensionFiles;  // for other drawings of the view; no control calls it

  ui::SettingsContent body(const Wording& wording) const;
};

}  // namespace tollvane
