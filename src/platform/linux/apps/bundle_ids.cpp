#include "platform/linux/apps/bundle_ids.h"

#include <algorithm>
#include <iterator>

namespace tollvane {

namespace {

struct Row {
  std::string_view bundleID;
  std::string_view desktopIDs;  // between spaces
};

constexpr Row kRows[] = {
    {"com.google.Chrome", "google-chrome google-chrome-stable com.google.Chrome"},
    {"com.google.Chrome.beta", "google-chrome-beta com.google.Chrome.beta"},
    {"com.google.Chrome.dev", "google-chrome-unstable com.google.ChromeDev com.google.Chrome.unstable"},
    {"com.google.Chrome.canary", "google-chrome-canary com.google.Chrome.canary"},
    {"com.microsoft.edgemac", "microsoft-edge microsoft-edge-stable com.microsoft.Edge"},
    {"com.microsoft.edgemac.Beta", "microsoft-edge-beta com.microsoft.EdgeBeta com.microsoft.Edge.beta"},
    {"com.microsoft.edgemac.Dev", "microsoft-edge-dev com.microsoft.EdgeDev com.microsoft.Edge.dev"},
    {"com.brave.Browser", "brave-browser brave-browser-stable brave com.brave.Browser brave_brave"},
    {"com.brave.Browser.beta", "brave-browser-beta com.brave.Browser.beta"},
    {"com.brave.Browser.nightly", "brave-browser-nightly com.brave.Browser.nightly"},
    {"company.thebrowser.Browser", ""},
    {"org.chromium.Chromium",
     "chromium chromium-browser org.chromium.Chromium chromium_chromium "
     "io.github.ungoogled_software.ungoogled_chromium"},
    {"org.mozilla.firefox", "firefox firefox-esr org.mozilla.firefox firefox_firefox"},
    {"org.mozilla.firefoxdeveloperedition", "firefox-developer-edition firefox-devedition"},
    {"org.mozilla.nightly", "firefox-nightly org.mozilla.firefox.nightly"},
    {"com.vivaldi.Vivaldi", "vivaldi-stable vivaldi com.vivaldi.Vivaldi vivaldi_vivaldi"},
    {"com.operasoftware.Opera", "opera opera-stable com.opera.Opera opera_opera"},
    {"com.apple.Safari", ""},
};

std::string_view takeWord(std::string_view& words) {
  const auto word = words.substr(0, words.find(' '));
  words.remove_prefix(std::min(word.size() + 1, words.size()));
  return word;
}

}  // namespace

std::vector<std::string> desktopIdsOfBundle(std::string_view bundleID) {
  for (const Row& row : kRows) {
    if (row.bundleID != bundleID) continue;
    std::vector<std::string> ids;
    for (std::string_view rest = row.desktopIDs; !rest.empty();) ids.emplace_back(takeWord(rest));
    return ids;
  }
  if (bundleID.empty()) return {};
  return {std::string(bundleID)};
}

std::string_view bundleOfDesktopId(std::string_view desktopID) {
  for (const Row& row : kRows)
    for (std::string_view rest = row.desktopIDs; !rest.empty();)
      if (takeWord(rest) == desktopID) return row.bundleID;
  return {};
}

bool isKnownBundle(std::string_view bundleID) {
  return std::any_of(std::begin(kRows), std::end(kRows), [&](const Row& row) { return row.bundleID == bundleID; });
}

}  // namespace tollvane
