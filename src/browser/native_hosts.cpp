#include "browser/native_hosts.h"

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {

std::optional<std::string> NativeHosts::installedBridgePath() {
  const auto bundled = platform_.bundle.auxiliaryExecutable(bridgeName);
  if (!bundled) return std::nullopt;
  Files& files = platform_.files;
  const auto bin = paths_.supportDir() / "bin";
  const auto installed = bin / bridgeName;
  const auto fresh = bin / (std::string(bridgeName) + ".new");
  if (!files.createDirectories(bin)) return *bundled;
  if (files.contentsEqual(*bundled, installed)) return installed;
  files.remove(fresh);
  return files.copy(*bundled, fresh) && files.rename(fresh, installed) ? installed : *bundled;
}

void NativeHosts::installManifests() {
  const auto bridge = installedBridgePath();
  if (!bridge) return;
  Files& files = platform_.files;
  for (const Browser browser : Browser::allCases) {
    const bool installed = browser.isInstalled(platform_.workspace);
    for (const auto& [directory, usual] : platform_.locations.nativeHostDirectories(browser.bundleID())) {
      if (!(installed && usual) && !files.exists(directory.parent_path())) continue;
      files.createDirectories(directory);
      files.write(directory / (std::string(hostName) + ".json"), manifest(browser, *bridge));
    }
  }
}

std::string NativeHosts::manifest(Browser browser, const std::string& bridge) const {
  nlohmann::json manifest = {
      {"name", hostName}, {"description", "Tollvane browser bridge"}, {"path", bridge}, {"type", "stdio"}};
  if (browser.isGecko()) {
    manifest["allowed_extensions"] = geckoExtensionIDs;
  } else {
    auto origins = nlohmann::json::array();
    for (const auto id : chromiumExtensionIDs) origins.push_back("chrome-extension://" + std::string(id) + "/");
    for (const auto& id : platform_.bundle.infoStrings(furtherExtensionIDsKey))
      origins.push_back("chrome-extension://" + id + "/");
    manifest["allowed_origins"] = origins;
  }
  return json::pretty(manifest);
}

}  // namespace tollvane
