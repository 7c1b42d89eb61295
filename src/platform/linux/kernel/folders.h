// Where things are on a Linux system: the user's home, the folders of the XDG Base Directory Specification, and
// programs by their names; and what the desktop session says in the environment. Any thread.
// Sources: freedesktop.org, XDG Base Directory Specification 0.8; systemd.unit(5), "Unit File Load Path".
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/locations.h"

namespace tollvane {

// Each is absent if the user has no home, unless the environment names the folder itself. Relative paths in the
// environment are ignored.
std::optional<std::filesystem::path> homeFolder();           // HOME, else as the user database says
std::optional<std::filesystem::path> dataFolder();           // XDG_DATA_HOME
std::optional<std::filesystem::path> configurationFolder();  // XDG_CONFIG_HOME
std::optional<std::filesystem::path> runtimeFolder();        // XDG_RUNTIME_DIR; absent without that variable

// The path of the program that a shell would start under this name; absent if none exists. A name with a slash in it
// must be an absolute path. `searchPath`: in the form of PATH; only its absolute folders are searched.
std::optional<std::string> findProgram(std::string_view name, std::string_view searchPath);

inline constexpr std::string_view defaultSearchPath =
    "/usr/local/bin:/usr/bin:/bin:/usr/local/games:/usr/games:/snap/bin";

class XdgLocations : public Locations {
 public:
  std::optional<std::filesystem::path> home() const override { return homeFolder(); }
  std::optional<std::filesystem::path> applicationSupport() const override { return dataFolder(); }
  std::optional<std::filesystem::path> runtimeFolder() const override { return tollvane::runtimeFolder(); }
  std::vector<std::filesystem::path> applicationFolders() const override { return {}; }  // Linux has no such folders
  std::vector<std::filesystem::path> nativeHostDirectories(std::string_view bundleID) const override;
};

// What a desktop session tells its programs in the environment.
struct DesktopEnvironment {
  std::vector<std::string> dataFolders;           // the most important one first
  std::vector<std::string> configurationFolders;  // likewise
  // Where unit files are, likewise: of the user's service manager and of the system's.
  std::vector<std::string> userUnitFolders;
  std::vector<std::string> systemUnitFolders;
  std::string searchPath;      // in the form of PATH
  std::string currentDesktop;  // in the form of XDG_CURRENT_DESKTOP

  // This process's own environment, with the folders of Flatpak and Snap added if they are missing.
  static DesktopEnvironment current();
};

}  // namespace tollvane
