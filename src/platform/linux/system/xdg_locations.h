// Where the user's files are, by XDG Base Directory 0.8 of freedesktop.org.
#pragma once

#include "platform/locations.h"

namespace tollvane {

class XdgLocations : public Locations {
 public:
  std::optional<std::filesystem::path> home() const override;
  std::optional<std::filesystem::path> applicationSupport() const override;              // $XDG_DATA_HOME
  std::vector<std::filesystem::path> applicationFolders() const override { return {}; }  // no such folders here
  std::vector<NativeHostDirectory> nativeHostDirectories(std::string_view bundleID) const override;

  // $XDG_CONFIG_HOME; absent like applicationSupport().
  static std::optional<std::filesystem::path> configuration();
};

}  // namespace tollvane
