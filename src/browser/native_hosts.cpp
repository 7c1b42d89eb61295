#include "browser/native_hosts.h"

#include <set>

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {

std::optional<std::string> NativeHosts::installedBridgePath() {
  const auto bundled = bundle_.auxiliaryExecutable(bridgeName);
  if (!bundled) return std::nullopt;
  const auto bin = paths_.supportDir() / programFolderName;
  const auto installed = bin / bridgeName;
  const auto fresh = bin / (std::string(bridgeName) + ".new");
  if (!files_.createDirectories(bin)) return *bundled;
  if (!files_.contentsEqual(*bundled, installed)) {
    files_.remove(fresh);
    if (!files_.copy(*bundled, fresh) || !files_.rename(fresh, installed)) return *bundled;
  }
  return files_.canBeStarted(installed) ? installed : *bundled;  // some homes may hold no programs
}

void NativeHosts::installManifests() {
  const auto bridge = installedBridgePath();
  if (!bridge) return;
  std::set<std::filesystem::path> written;  // several editions may look into one directory
  for (const Browser browser : Browser::allCases) {
    for (const std::string_view edition : browser.editions()) {
      const bool isHere =
          workspace_.urlForApplication(edition).has_value() || !workspace_.runningApplications(edition).empty();
      for (const auto& directory : locations_.nativeHostDirectories(edition)) {
        if (!isHere && !files_.exists(directory.parent_path())) continue;
        if (!written.insert(directory).second) continue;
        write(directory / manifestFile(), manifest(browser, *bridge, bundle_));
      }
    }
  }
}

// A browser that reads it meanwhile sees the old manifest or the new one, also if the disk is full.
void NativeHosts::write(const std::filesystem::path& file, const std::string& manifest) {
  if (files_.read(file, manifest.size()) == manifest) return;
  files_.createDirectories(file.parent_path());
  files_.writeAtomically(file, manifest);
}

std::string NativeHosts::manifestFile() { return std::string(hostName) + ".json"; }

std::vector<std::string> NativeHosts::chromiumOrigins(const Bundle& bundle) {
  std::vector<std::string> origins;
  const auto add = [&](std::string_view id) { origins.push_back("chrome-extension://" + std::string(id) + "/"); };
  for (const auto id : chromiumExtensionIDs) add(id);
  for (const auto& id : bundle.infoStrings(furtherExtensionIDsKey)) add(id);
  return origins;
}

std::string NativeHosts::manifest(Browser browser, const std::string& bridge, const Bundle& bundle) {
  nlohmann::json manifest = {
      {"name", hostName}, {"description", "Tollvane browser bridge"}, {"path", bridge}, {"type", "stdio"}};
  if (browser.isGecko()) {
    manifest["allowed_extensions"] = geckoExtensionIDs;
  } else {
    manifest["allowed_origins"] = chromiumOrigins(bundle);
  }
  return json::pretty(manifest);
}

}  // namespace tollvane
