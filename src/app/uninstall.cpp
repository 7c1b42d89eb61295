#include "app/uninstall.h"

#include "browser/native_hosts.h"
#include "model/browser.h"

namespace tollvane {
namespace {

constexpr int deepestFolder = 8;

class Remover {
 public:
  Remover(Files& files, Uninstalled& result) : files_(files), result_(result) {}

  void remove(const std::filesystem::path& path) {
    if (files_.remove(path)) {
      result_.removed.push_back(path);
    } else if (files_.exists(path)) {
      result_.left.push_back(path);
    }
  }

  // A folder with something in it stays.
  void removeIfEmpty(const std::filesystem::path& folder) {
    const auto names = files_.list(folder);
    if (names && names->empty()) remove(folder);
  }

  void removeWithContents(const std::filesystem::path& path, int depth = 0) {
    if (files_.remove(path)) {
      result_.removed.push_back(path);
      return;
    }
    if (const auto names = depth < deepestFolder ? files_.list(path) : std::nullopt)
      for (const std::string& name : *names) removeWithContents(path / name, depth + 1);
    remove(path);
  }

 private:
  Files& files_;
  Uninstalled& result_;
};

}  // namespace

Uninstalled uninstall(Files& files, const Locations& locations, LoginService& login,
                      const std::optional<std::filesystem::path>& settingsFolder, bool all,
                      const std::vector<std::filesystem::path>& others) {
  Uninstalled result;
  Remover remover(files, result);
  result.loginFailure = login.unregisterApplication();
  for (const Browser browser : Browser::allCases) {
    for (const std::string_view edition : browser.editions()) {
      for (const auto& directory : locations.nativeHostDirectories(edition)) {
        const auto manifest = directory / NativeHosts::manifestFile();
        if (!files.exists(manifest)) continue;
        remover.remove(manifest);
        remover.removeIfEmpty(directory);
      }
    }
  }
  for (const auto& path : others)
    if (files.exists(path)) remover.removeWithContents(path);
  if (const auto data = locations.applicationSupport()) {
    const auto support = *data / supportDirectoryName;
    const auto bin = support / programFolderName;
    remover.remove(bin / NativeHosts::bridgeName);
    remover.remove(bin / (std::string(NativeHosts::bridgeName) + ".new"));
    remover.removeIfEmpty(bin);
    remover.remove(support / bridgeSocketName);
    remover.remove(support / doctorFileName);
    remover.removeIfEmpty(support / "safari-inbox");
    if (all) {
      remover.removeWithContents(support);
    } else {
      remover.removeIfEmpty(support);
    }
  }
  if (const auto runtime = locations.runtimeFolder()) {
    const auto folder = *runtime / supportDirectoryName;
    remover.remove(folder / bridgeSocketName);
    remover.removeIfEmpty(folder);
  }
  if (all && settingsFolder) remover.removeWithContents(*settingsFolder);
  return result;
}

}  // namespace tollvane
