#include "catalogue/browsers.h"

#include <algorithm>
#include <array>

#include "support/ascii.h"

namespace tollvane {
namespace {

// The names are compared with the names that the system gives to applications: spelling and capitals matter.
constexpr std::array editions = {
    BrowserEdition{
        .family = "chrome",
        .bundleID = "com.google.Chrome",
        .name = "Google Chrome",
        .desktopIds = "google-chrome google-chrome-stable com.google.Chrome",
        .programs = "/google/chrome/chrome",
        .manifests = "google-chrome/NativeMessagingHosts",
        .systemManifests = "/etc/opt/chrome/native-messaging-hosts",
        .macManifests = "Google/Chrome/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "chrome",
        .bundleID = "com.google.Chrome.beta",
        .desktopIds = "google-chrome-beta com.google.Chrome.beta",
        .programs = "/google/chrome-beta/chrome",
        .manifests = "google-chrome-beta/NativeMessagingHosts",
        .systemManifests = "/etc/opt/chrome/native-messaging-hosts",
        .macManifests = "Google/Chrome Beta/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "chrome",
        .bundleID = "com.google.Chrome.dev",
        .desktopIds = "google-chrome-unstable com.google.ChromeDev com.google.Chrome.unstable",
        .programs = "/google/chrome-unstable/chrome",
        .manifests = "google-chrome-unstable/NativeMessagingHosts",
        .systemManifests = "/etc/opt/chrome/native-messaging-hosts",
        .macManifests = "Google/Chrome Dev/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "chrome",
        .bundleID = "com.google.Chrome.canary",
        .desktopIds = "google-chrome-canary com.google.Chrome.canary",
        .programs = "/google/chrome-canary/chrome",
        .manifests = "google-chrome-canary/NativeMessagingHosts",
        .systemManifests = "/etc/opt/chrome/native-messaging-hosts",
        .macManifests = "Google/Chrome Canary/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "edge",
        .bundleID = "com.microsoft.edgemac",
        .name = "Microsoft Edge",
        .desktopIds = "microsoft-edge microsoft-edge-stable com.microsoft.Edge",
        .programs = "/microsoft/msedge/msedge",
        .manifests = "microsoft-edge/NativeMessagingHosts",
        .systemManifests = "/etc/opt/edge/native-messaging-hosts",
        .macManifests = "Microsoft Edge/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "edge",
        .bundleID = "com.microsoft.edgemac.Beta",
        .desktopIds = "microsoft-edge-beta com.microsoft.EdgeBeta com.microsoft.Edge.beta",
        .programs = "/microsoft/msedge-beta/msedge",
        .manifests = "microsoft-edge-beta/NativeMessagingHosts",
        .systemManifests = "/etc/opt/edge/native-messaging-hosts",
        .macManifests = "Microsoft Edge Beta/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "edge",
        .bundleID = "com.microsoft.edgemac.Dev",
        .desktopIds = "microsoft-edge-dev com.microsoft.EdgeDev com.microsoft.Edge.dev",
        .programs = "/microsoft/msedge-dev/msedge",
        .manifests = "microsoft-edge-dev/NativeMessagingHosts",
        .systemManifests = "/etc/opt/edge/native-messaging-hosts",
        .macManifests = "Microsoft Edge Dev/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "brave",
        .bundleID = "com.brave.Browser",
        .name = "Brave Browser",
        .desktopIds = "brave-browser brave-browser-stable brave com.brave.Browser brave_brave",
        .programs = "/brave/brave",
        .manifests = "BraveSoftware/Brave-Browser/NativeMessagingHosts",
        .macManifests = "BraveSoftware/Brave-Browser/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "brave",
        .bundleID = "com.brave.Browser.beta",
        .desktopIds = "brave-browser-beta com.brave.Browser.beta",
        .programs = "/brave-beta/brave",
        .manifests = "BraveSoftware/Brave-Browser-Beta/NativeMessagingHosts",
        .macManifests = "BraveSoftware/Brave-Browser-Beta/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "brave",
        .bundleID = "com.brave.Browser.nightly",
        .desktopIds = "brave-browser-nightly com.brave.Browser.nightly",
        .programs = "/brave-nightly/brave",
        .manifests = "BraveSoftware/Brave-Browser-Nightly/NativeMessagingHosts",
        .macManifests = "BraveSoftware/Brave-Browser-Nightly/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "arc",
        .bundleID = "company.thebrowser.Browser",
        .name = "Arc",
        .macManifests = "Arc/User Data/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "chromium",
        .bundleID = "org.chromium.Chromium",
        .name = "Chromium",
        .desktopIds = "chromium chromium-browser org.chromium.Chromium chromium_chromium "
                      "io.github.ungoogled_software.ungoogled_chromium",
        .programs = "/chromium /chromium-browser /chromium/chrome /chromium-browser/chrome /chrome-linux/chrome",
        .manifests = "chromium/NativeMessagingHosts",
        .systemManifests = "/etc/chromium/native-messaging-hosts",
        .macManifests = "Chromium/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "firefox",
        .bundleID = "org.mozilla.firefox",
        .name = "Firefox",
        .desktopIds = "firefox firefox-esr org.mozilla.firefox firefox_firefox",
        .programs = "/firefox /firefox-bin /firefox-esr",
        .manifests = "~/.mozilla/native-messaging-hosts",
        .systemManifests = "/usr/lib/mozilla/native-messaging-hosts",
        .macManifests = "Mozilla/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "firefox",
        .bundleID = "org.mozilla.firefoxbeta",
        .desktopIds = "firefox-beta org.mozilla.firefox.beta",
        .programs = "/firefox-beta/firefox /firefox-beta/firefox-bin",
        .manifests = "~/.mozilla/native-messaging-hosts",
        .systemManifests = "/usr/lib/mozilla/native-messaging-hosts",
        .macManifests = "Mozilla/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "firefox",
        .bundleID = "org.mozilla.firefoxdeveloperedition",
        .desktopIds = "firefox-developer-edition firefox-devedition firefoxdeveloperedition "
                      "org.mozilla.firefox.devedition",
        .programs = "/firefox-developer-edition/firefox /firefox-developer-edition/firefox-bin "
                    "/firefox-devedition/firefox /firefox-devedition/firefox-bin",
        .manifests = "~/.mozilla/native-messaging-hosts",
        .systemManifests = "/usr/lib/mozilla/native-messaging-hosts",
        .macManifests = "Mozilla/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "firefox",
        .bundleID = "org.mozilla.nightly",
        .desktopIds = "firefox-nightly org.mozilla.firefox.nightly",
        .programs = "/firefox-nightly/firefox /firefox-nightly/firefox-bin",
        .manifests = "~/.mozilla/native-messaging-hosts",
        .systemManifests = "/usr/lib/mozilla/native-messaging-hosts",
        .macManifests = "Mozilla/NativeMessagingHosts",
    },
    BrowserEdition{
        .family = "safari",
        .bundleID = "com.apple.Safari",
        .name = "Safari",
    },
    BrowserEdition{
        .bundleID = "com.vivaldi.Vivaldi",
        .desktopIds = "vivaldi-stable vivaldi com.vivaldi.Vivaldi vivaldi_vivaldi",
        .programs = "/vivaldi/vivaldi-bin",
    },
    BrowserEdition{
        .bundleID = "com.operasoftware.Opera",
        .desktopIds = "opera opera-stable com.opera.Opera opera_opera",
        .programs = "/opera/opera",
    },
};

template <typename Test>
const BrowserEdition* first(Test test) {
  const auto* const found = std::find_if(editions.begin(), editions.end(), test);
  return found == editions.end() ? nullptr : found;
}

}  // namespace

bool BrowserEdition::hasDesktopId(std::string_view id) const {
  for (std::string_view rest = desktopIds; !rest.empty();)
    if (ascii::takePart(rest, ' ') == id) return true;
  return false;
}

std::span<const BrowserEdition> browserEditions() { return editions; }

const BrowserEdition* editionOfBundle(std::string_view bundleID) {
  return first([&](const BrowserEdition& edition) { return edition.bundleID == bundleID; });
}

const BrowserEdition* editionOfDesktopId(std::string_view desktopId) {
  return first([&](const BrowserEdition& edition) { return edition.hasDesktopId(desktopId); });
}

const BrowserEdition* editionOfProgram(std::string_view path) {
  const BrowserEdition* found = nullptr;
  std::size_t longest = 0;
  for (const BrowserEdition& edition : editions) {
    for (std::string_view rest = edition.programs; !rest.empty();) {
      const std::string_view ending = ascii::takePart(rest, ' ');
      if (ending.size() <= longest || !path.ends_with(ending)) continue;
      found = &edition;
      longest = ending.size();
    }
  }
  return found;
}

const BrowserEdition* mainRelease(std::string_view family) {
  return first([&](const BrowserEdition& edition) { return edition.isMainRelease() && edition.family == family; });
}

std::vector<std::string_view> desktopIdsOfBundle(std::string_view bundleID) {
  const BrowserEdition* const edition = editionOfBundle(bundleID);
  std::vector<std::string_view> ids;
  for (std::string_view rest = edition ? edition->desktopIds : bundleID; !rest.empty();)
    ids.push_back(ascii::takePart(rest, ' '));
  return ids;
}

}  // namespace tollvane
