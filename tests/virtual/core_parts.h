// Makes parts of the core on a virtual system.
#pragma once

#include "browser/browser_link.h"
#include "settings/settings_model.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane::test {

// The arguments must outlive the result.
inline BrowserLink makeLink(VirtualPlatform& system, const Paths& paths) {
  return {system.queue, system.safari, system.files, system.locations, system.bundle, system.workspace, paths};
}

inline SettingsModel makeSettingsModel(VirtualPlatform& system, LoginItem& loginItem) {
  return {system.workspace, system.bundle, system.queue, macWording, Prefs(system.defaults), loginItem};
}

}  // namespace tollvane::test
