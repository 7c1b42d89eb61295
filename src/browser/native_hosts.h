// Lets browsers start the bridge: copies it to a place that stays, and writes into each browser's own directory a
// manifest that names the copy and the extensions that may talk to it. Fails silently; a failure at one browser does
// not affect the others. Main thread only. Sources: developer.chrome.com, "Native messaging"; extensionworkshop and
// MDN, "Native manifests".
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/browser.h"
#include "model/paths.h"
#include "platform/bundle.h"
#include "platform/files.h"
#include "platform/locations.h"
#include "platform/workspace.h"

namespace tollvane {

class NativeHosts {
 public:
  static constexpr std::string_view hostName = "com.quarnel.tollvane";
  static constexpr std::string_view bridgeName = "TollvaneBridge";

  // The ids in Chrome's store. A bundle may name more of them in its information record, under furtherExtensionIDsKey:
  // those of its own extension, loaded unpacked.
  static constexpr std::array<std::string_view, 3> chromiumExtensionIDs = {
      "kembcdlbgbcnnchcnbdhbmbhbejnedjf", "dgldcbgpnkooljhfhcjpkojcdnfkepnb", "ckklpoccipcbjojmlaolfdpbgjehmmpc"};
  static constexpr std::string_view furtherExtensionIDsKey = "TollvaneChromiumExtensionIDs";
  static constexpr std::array<std::string_view, 1> geckoExtensionIDs = {"tollvane@quarnel.com"};

  NativeHosts(Files& files, const Locations& locations, const Bundle& bundle, const Workspace& workspace,
              const Paths& paths)
      : files_(files), locations_(locations), bundle_(bundle), workspace_(workspace), paths_(paths) {}

  // The path to put into manifests: that of the copy, which is made or renewed if necessary; that of the bundle's own
  // bridge if there can be no copy; absent if the bundle has no bridge.
  std::optional<std::string> installedBridgePath();

  // Writes a manifest for every edition of a browser that is installed, that runs, or whose directory exists.
  void installManifests();

  // What a manifest says, and its file's name. Packages for all users of a computer ship the same manifests in the
  // system's directories, with the bundle's own bridge.
  static std::string manifest(Browser browser, const std::string& bridge, const Bundle& bundle);
  static std::string manifestFile();

  // The extensions that a manifest for the Chromium family admits.
  static std::vector<std::string> chromiumOrigins(const Bundle& bundle);

 private:
  void write(const std::filesystem::path& file, const std::string& manifest);

  Files& files_;
  const Locations& locations_;
  const Bundle& bundle_;
  const Workspace& workspace_;
  const Paths& paths_;
};

}  // namespace tollvane
