#include "platform/linux/system/xdg_locations.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string_view>

namespace tollvane {
namespace {

std::optional<std::filesystem::path> absolutePath(const char* text) {
  // Relative paths are to be ignored, says the standard.
  if (text == nullptr || *text != '/') return std::nullopt;
  return text;
}

std::optional<std::filesystem::path> homeDirectory() {
  if (auto path = absolutePath(std::getenv("HOME"))) return path;
  const passwd* user = getpwuid(getuid());
  return user == nullptr ? std::nullopt : absolutePath(user->pw_dir);
}

std::optional<std::filesystem::path> directory(const char* variable, const char* otherwise) {
  if (auto path = absolutePath(std::getenv(variable))) return path;
  const auto base = homeDirectory();
  return base ? std::optional(*base / otherwise) : std::nullopt;
}

// Where each browser keeps its settings, and looks for manifests. Only those that can start a program of the user's: a
// Flatpak or Snap has no way to.
struct BrowserDirectory {
  std::string_view bundleID;
  enum class Base { home, configuration } base;
  std::string_view directory;
  bool usual;  // of the browser's main release
};

using Base = BrowserDirectory::Base;

constexpr std::array browserDirectories = {
    BrowserDirectory{"com.google.Chrome", Base::configuration, "google-chrome/NativeMessagingHosts", true},
    BrowserDirectory{"com.google.Chrome", Base::configuration, "google-chrome-beta/NativeMessagingHosts", false},
    BrowserDirectory{"com.google.Chrome", Base::configuration, "google-chrome-unstable/NativeMessagingHosts", false},
    BrowserDirectory{"com.microsoft.edgemac", Base::configuration, "microsoft-edge/NativeMessagingHosts", true},
    BrowserDirectory{"com.microsoft.edgemac", Base::configuration, "microsoft-edge-beta/NativeMessagingHosts", false},
    BrowserDirectory{"com.microsoft.edgemac", Base::configuration, "microsoft-edge-dev/NativeMessagingHosts", false},
    BrowserDirectory{"com.brave.Browser", Base::configuration, "BraveSoftware/Brave-Browser/NativeMessagingHosts",
                     true},
    BrowserDirectory{"org.chromium.Chromium", Base::configuration, "chromium/NativeMessagingHosts", true},
    BrowserDirectory{"org.mozilla.firefox", Base::home, ".mozilla/native-messaging-hosts", true},
};

}  // namespace

std::vector<Locations::NativeHostDirectory> XdgLocations::nativeHostDirectories(std::string_view bundleID) const {
  std::vector<NativeHostDirectory> directories;
  for (const BrowserDirectory& row : browserDirectories) {
    if (row.bundleID != bundleID) continue;
    if (const auto base = row.base == Base::home ? homeDirectory() : configuration())
      directories.push_back({*base / row.directory, row.usual});
  }
  return directories;
}

std::optional<std::filesystem::path> XdgLocations::home() const { return homeDirectory(); }

std::optional<std::filesystem::path> XdgLocations::applicationSupport() const {
  return directory("XDG_DATA_HOME", ".local/share");
}

std::optional<std::filesystem::path> XdgLocations::configuration() { return directory("XDG_CONFIG_HOME", ".config"); }

}  // namespace tollvane
