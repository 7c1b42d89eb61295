// Where browsers look on macOS for the manifests of native programs. Pure; any thread.
// Sources: "Native messaging" on developer.chrome.com, "Native manifests" on MDN, and the makers' own pages for Edge,
// Brave, Arc and Vivaldi.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tollvane {

// The folder below Application Support in which the browser with this bundle identifier looks; empty if the browser is
// unknown or starts no native programs.
constexpr std::string_view manifestFolder(std::string_view bundleID) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 18> folders = {{
      {"com.google.Chrome", "Google/Chrome/NativeMessagingHosts"},
      {"com.google.Chrome.beta", "Google/Chrome Beta/NativeMessagingHosts"},
      {"com.google.Chrome.dev", "Google/Chrome Dev/NativeMessagingHosts"},
      {"com.google.Chrome.canary", "Google/Chrome Canary/NativeMessagingHosts"},
      {"com.microsoft.edgemac", "Microsoft Edge/NativeMessagingHosts"},
      {"com.microsoft.edgemac.Beta", "Microsoft Edge Beta/NativeMessagingHosts"},
      {"com.microsoft.edgemac.Dev", "Microsoft Edge Dev/NativeMessagingHosts"},
      {"com.microsoft.edgemac.Canary", "Microsoft Edge Canary/NativeMessagingHosts"},
      {"com.brave.Browser", "BraveSoftware/Brave-Browser/NativeMessagingHosts"},
      {"com.brave.Browser.beta", "BraveSoftware/Brave-Browser-Beta/NativeMessagingHosts"},
      {"com.brave.Browser.nightly", "BraveSoftware/Brave-Browser-Nightly/NativeMessagingHosts"},
      {"company.thebrowser.Browser", "Arc/User Data/NativeMessagingHosts"},
      {"org.chromium.Chromium", "Chromium/NativeMessagingHosts"},
      {"com.vivaldi.Vivaldi", "Vivaldi/NativeMessagingHosts"},
      {"org.mozilla.firefox", "Mozilla/NativeMessagingHosts"},
      {"org.mozilla.firefoxbeta", "Mozilla/NativeMessagingHosts"},
      {"org.mozilla.firefoxdeveloperedition", "Mozilla/NativeMessagingHosts"},
      {"org.mozilla.nightly", "Mozilla/NativeMessagingHosts"},
  }};
  const auto found =
      std::find_if(folders.begin(), folders.end(), [&](const auto& row) { return row.first == bundleID; });
  return found == folders.end() ? std::string_view() : found->second;
}

}  // namespace tollvane
