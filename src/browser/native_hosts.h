// What makes browsers start the bridge: a copy of it in a place that stays, and in each browser's own directory a
// manifest that names it and the extensions that may talk to it. Failure is silent, browser by browser.
// Main thread only.
// Sources: developer.chrome.com, "Native messaging"; extensionworkshop and MDN, "Native manifests".
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

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

  // In Chrome's store. A bundle may name more of them under this key of its information record: its own extension,
  // loaded unpacked.
  static constexpr std::array<std::string_view, 3> chromiumExtensionIDs = {
      "kembcdlbgbcnnchcnbdhbmbhbejnedjf", "dgldcbgpnkooljhfhcjpkojcdnfkepnb", "ckklpoccipcbjojmlaolfdpbgjehmmpc"};
  static constexpr std::string_view furtherExtensionIDsKey = "TollvaneChromiumExtensionIDs";
  static constexpr std::array<std::string_view, 1> geckoExtensionIDs = {"tollvane@quarnel.com"};

  NativeHosts(Files& files, const Locations& locations, const Bundle& bundle, const Workspace& workspace,
              const Paths& paths)
      : files_(files), locations_(locations), bundle_(bundle), workspace_(workspace), paths_(paths) {}

  // The path to put into manifests: the copy, made or renewed if need be; the bundle's own bridge if there can be no
  // copy; absent if the bundle has none.
  std::optional<std::string> installedBridgePath();

  // For every browser that is installed, or has been.
  void installManifests();

 private:
  std::string manifest(Browser browser, const std::string& bridge) const;

  Files& files_;
  const Locations& locations_;
  const Bundle& bundle_;
  const Workspace& workspace_;
  const Paths& paths_;
};

}  // namespace tollvane
