// All that Tollvane knows about browsers: a table with one row per edition (Chrome, Chrome beta, Firefox ESR ...). A
// family is a group of editions that one extension of ours serves; its first row is its main release. Constant data;
// any thread.
//
//   for (const BrowserEdition& edition : browserEditions())
//     if (edition.hasDesktopId("firefox-esr")) use(edition.bundleID);
//
// Sources: the packages and documentation of the browsers' makers; "Native messaging" on developer.chrome.com, "Native
// manifests" on MDN and the makers' own pages for Edge, Brave and Arc for the folders of manifests.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace tollvane {

struct BrowserEdition {
  std::string_view family = {};  // "chrome"; empty if our extension is not made for this browser
  std::string_view bundleID;     // names the edition everywhere in Tollvane
  std::string_view name = {};    // what the user sees; set only for a family's main release

  // For Linux. The members of lists are separated by blanks.
  std::string_view desktopIds = {};  // ids of its desktop entries: a distribution's, its maker's, Flatpak's, Snap's
  std::string_view programs = {};    // how the path of its running program may end
  // The folder in which it looks for manifests of native programs: below the home folder ("~/") or below the
  // configuration folder. Empty if it has no such folder of its own.
  std::string_view manifests = {};
  // The folder in which it looks for manifests that are for all users. Empty if it has none that we know.
  std::string_view systemManifests = {};

  // For macOS: the folder below Application Support in which it looks for manifests of native programs. Empty if it
  // starts none.
  std::string_view macManifests = {};

  bool hasDesktopId(std::string_view id) const;
  bool isMainRelease() const { return !name.empty(); }
};

// Sorted by family, each family's main release first.
std::span<const BrowserEdition> browserEditions();

// These return null if no edition in the table fits. The program may be anywhere; of several endings that fit, the
// longest one counts.
const BrowserEdition* editionOfBundle(std::string_view bundleID);
const BrowserEdition* editionOfDesktopId(std::string_view desktopId);
const BrowserEdition* editionOfProgram(std::string_view path);
const BrowserEdition* mainRelease(std::string_view family);

// The ids that this application's desktop entry may have on Linux, the most usual first. For an application that is not
// in the table: only `bundleID` itself.
std::vector<std::string_view> desktopIdsOfBundle(std::string_view bundleID);

}  // namespace tollvane
