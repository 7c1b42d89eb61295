// Takes back what Tollvane has written for its user: the start at login, the manifests that let browsers start the
// bridge, and the copy of the bridge. To be called while no Tollvane runs, because that would write some of it again.
// Main thread only.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/locations.h"
#include "platform/login_service.h"

namespace tollvane {

struct Uninstalled {
  std::vector<std::filesystem::path> removed;
  std::vector<std::filesystem::path> left;  // could not be removed
  std::optional<std::string> loginFailure;  // why Tollvane may still start at login
};

// `settingsFolder`: the one with the settings; absent if the user has none. History and settings are removed only if
// `all` is true; then nothing stays in Tollvane's two folders. Links there are removed, and never followed. `others`:
// files and folders that only this system has; all of them are removed.
Uninstalled uninstall(Files& files, const Locations& locations, LoginService& login,
                      const std::optional<std::filesystem::path>& settingsFolder, bool all,
                      const std::vector<std::filesystem::path>& others = {});

}  // namespace tollvane
