#include "platform/linux/kernel/folders.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "catalogue/browsers.h"
#include "support/ascii.h"

namespace tollvane {
namespace {

constexpr std::string_view defaultDataFolders = "/usr/local/share/:/usr/share/";
constexpr std::string_view moreDataFolders[] = {"/var/lib/flatpak/exports/share", "/var/lib/snapd/desktop"};

std::optional<std::filesystem::path> absolutePath(const char* text) {
  if (text == nullptr || *text != '/') return std::nullopt;
  return text;
}

std::optional<std::filesystem::path> folder(const char* variable, const char* belowHome) {
  if (auto path = absolutePath(std::getenv(variable))) return path;
  const auto home = homeFolder();
  return home ? std::optional(*home / belowHome) : std::nullopt;
}

// Where this browser looks for manifests; absent if it has no such folder of its own.
std::optional<std::filesystem::path> manifestFolder(const BrowserEdition& edition) {
  constexpr std::string_view belowHome = "~/";
  std::string_view path = edition.manifests;
  if (path.empty()) return std::nullopt;
  const bool isBelowHome = path.starts_with(belowHome);
  if (isBelowHome) path.remove_prefix(belowHome.size());
  const auto base = isBelowHome ? homeFolder() : configurationFolder();
  return base ? std::optional(*base / path) : std::nullopt;
}

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

void addFolder(std::vector<std::string>& folders, std::string_view folder) {
  while (folder.size() > 1 && folder.ends_with('/')) folder.remove_suffix(1);
  if (!folder.starts_with('/')) return;
  if (std::find(folders.begin(), folders.end(), folder) == folders.end()) folders.emplace_back(folder);
}

}  // namespace

std::optional<std::filesystem::path> homeFolder() {
  if (auto path = absolutePath(std::getenv("HOME"))) return path;
  const passwd* user = ::getpwuid(::getuid());
  return user == nullptr ? std::nullopt : absolutePath(user->pw_dir);
}

std::optional<std::filesystem::path> dataFolder() { return folder("XDG_DATA_HOME", ".local/share"); }
std::optional<std::filesystem::path> configurationFolder() { return folder("XDG_CONFIG_HOME", ".config"); }
std::optional<std::filesystem::path> runtimeFolder() { return absolutePath(std::getenv("XDG_RUNTIME_DIR")); }

std::optional<std::string> findProgram(std::string_view name, std::string_view searchPath) {
  const auto isProgram = [](const std::string& path) { return ::access(path.c_str(), X_OK) == 0; };
  if (name.find('/') != std::string_view::npos) {
    std::string path(name);
    return name.front() == '/' && isProgram(path) ? std::optional(std::move(path)) : std::nullopt;
  }
  while (!name.empty() && !searchPath.empty()) {
    const std::string_view folder = ascii::takePart(searchPath, ':');
    if (!folder.starts_with('/')) continue;
    std::string path = std::string(folder) + "/" + std::string(name);
    if (isProgram(path)) return path;
  }
  return std::nullopt;
}

std::vector<std::filesystem::path> XdgLocations::nativeHostDirectories(std::string_view bundleID) const {
  const BrowserEdition* const edition = editionOfBundle(bundleID);
  auto folder = edition ? manifestFolder(*edition) : std::nullopt;
  if (!folder) return {};
  return {*std::move(folder)};
}

DesktopEnvironment DesktopEnvironment::current() {
  DesktopEnvironment environment;
  const auto data = dataFolder();
  if (data) addFolder(environment.dataFolders, data->native());
  const std::string given = variable("XDG_DATA_DIRS");
  for (std::string_view rest = given.empty() ? defaultDataFolders : std::string_view(given); !rest.empty();)
    addFolder(environment.dataFolders, ascii::takePart(rest, ':'));
  if (data) addFolder(environment.dataFolders, (*data / "flatpak/exports/share").native());
  if (const auto home = homeFolder())
    addFolder(environment.dataFolders, (*home / ".local/share/flatpak/exports/share").native());
  for (const std::string_view folder : moreDataFolders) addFolder(environment.dataFolders, folder);
  const auto configuration = configurationFolder();
  if (configuration) addFolder(environment.configurationFolders, configuration->native());
  const std::string configurations = variable("XDG_CONFIG_DIRS");
  for (std::string_view rest = configurations.empty() ? "/etc/xdg" : std::string_view(configurations); !rest.empty();)
    addFolder(environment.configurationFolders, ascii::takePart(rest, ':'));
  if (configuration) addFolder(environment.userUnitFolders, (*configuration / "systemd/user").native());
  addFolder(environment.userUnitFolders, "/etc/systemd/user");
  if (const auto runtime = runtimeFolder())
    addFolder(environment.userUnitFolders, (*runtime / "systemd/user").native());
  addFolder(environment.userUnitFolders, "/run/systemd/user");
  for (const std::string& folder : environment.dataFolders)
    addFolder(environment.userUnitFolders, folder + "/systemd/user");
  for (const std::string_view root : {"/usr/local/lib", "/usr/lib"})
    addFolder(environment.userUnitFolders, std::string(root) + "/systemd/user");
  for (const std::string_view root : {"/etc", "/run", "/usr/local/lib", "/usr/lib", "/lib"})
    addFolder(environment.systemUnitFolders, std::string(root) + "/systemd/system");
  environment.searchPath = variable("PATH");
  if (environment.searchPath.empty()) environment.searchPath = defaultSearchPath;
  environment.currentDesktop = variable("XDG_CURRENT_DESKTOP");
  return environment;
}

}  // namespace tollvane
