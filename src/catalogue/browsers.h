// All that Tollvane knows of browsers: one table, one row an edition (Chrome, Chrome beta, Firefox ESR ...). A family
// is what one extension of ours serves; its first row is its main release. Constant data; any thread.
//
//   for (const BrowserEdition& edition : browserEditions())
//     if (edition.hasDesktopId("firefox-esr")) use(edition.bundleID);
//
// Sources: the packages and documentation of the browsers' makers; "Native messaging" on developer.chrome.com and
// "Native manifests" on MDN for the folders of manifests.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace tollvane {

struct BrowserEdition {
  std::string_view family = {};  // "chrome"; empty for a browser that our extension is not made for
  std::string_view bundleID;     // names the edition everywhere in Tollvane
  std::string_view name = {};    // what the user sees; only of a family's main release

  // On Linux. Lists have a blank between their members.
  std::string_view desktopIds = {};  // of its desktop entries: a distribution's, its maker's, the Flatpak's, the Snap's
  std::string_view programs = {};    // how the path of its running program ends, if a package installed it
  // Where it looks for manifests of native programs: below the home folder ("~/") or below the configuration folder.
  // Empty if it cannot start programs of the user's.
  std::string_view manifests = {};

  bool hasDesktopId(std::string_view id) const;
  bool hasProgram(std::string_view path) const;
  bool isMainRelease() const { return !name.empty(); }
};

// In the order of the families, each family's main release first.
std::span<const BrowserEdition> browserEditions();

// Null for an identifier that is not in the table.
const BrowserEdition* editionOfBundle(std::string_view bundleID);
const BrowserEdition* editionOfDesktopId(std::string_view desktopId);
const BrowserEdition* editionOfProgram(std::string_view path);

// The ids that the desktop entry of this application may have on Linux, the most usual first. An application that is
// not in the table is looked for under its identifier.
std::vector<std::string_view> desktopIdsOfBundle(std::string_view bundleID);

}  // namespace tollvane
