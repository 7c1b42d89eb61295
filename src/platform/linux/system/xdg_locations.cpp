#include "platform/linux/system/xdg_locations.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace tollvane {
namespace {

std::optional<std::filesystem::path> absolutePath(const char* text) {
  // Relative paths are to be ignored, says the standard.
  if (text == nullptr || *text != '/') return std::nullopt;
  return text;
}

std::optional<std::filesystem::path> home() {
  if (auto path = absolutePath(std::getenv("HOME"))) return path;
  const passwd* user = getpwuid(getuid());
  return user == nullptr ? std::nullopt : absolutePath(user->pw_dir);
}

std::optional<std::filesystem::path> directory(const char* variable, const char* otherwise) {
  if (auto path = absolutePath(std::getenv(variable))) return path;
  const auto base = home();
  return base ? std::optional(*base / otherwise) : std::nullopt;
}

}  // namespace

std::optional<std::filesystem::path> XdgLocations::applicationSupport() const {
  return directory("XDG_DATA_HOME", ".local/share");
}

std::optional<std::filesystem::path> XdgLocations::configuration() { return directory("XDG_CONFIG_HOME", ".config"); }

}  // namespace tollvane
