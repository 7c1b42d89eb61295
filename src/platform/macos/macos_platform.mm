#include "platform/macos/macos_platform.h"

#include <string>

namespace tollvane {

// The tooltip says it as long as it is so. The alert says it once for all: Tollvane starts at each login.
void MacPlatform::logIsRefused() {
  constexpr std::string_view isTold = "toldOfLogRefusal";
  wording_.noLogTool = logRefusedToolTip;
  if (defaults_->object(isTold)) return;
  defaults_->set(isTold, true);
  application_->activateIgnoringOtherApps();
  alerts_->show({std::string(logRefusedTitle), std::string(logRefused)}, [](std::size_t) {});
}

Platform MacPlatform::roles() {
  return {
      .mainQueue = *queue_,
      .clock = *clock_,
      .dates = *dates_,
      .defaults = *defaults_,
      .locations = *locations_,
      .files = files_,
      .bundle = *bundle_,
      .children = *children_,
      .processes = *processes_,
      .workspace = *workspace_,
      .statusBar = *statusBar_,
      .application = *application_,
      .alerts = *alerts_,
      .http = *http_,
      .safari = *safari_,
      .login = *login_,
      .settingsWindows = *settingsWindows_,
      .wording = wording_,
  };
}

}  // namespace tollvane
