// Looks at this computer for the doctor: at the sound servers, the session bus, the desktop, the browsers, and the
// files of the user. Changes nothing, and starts nothing. Main thread only; needs a QCoreApplication.
#pragma once

#include <QDBusConnection>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/examination.h"

namespace tollvane {

// What the manifests of our bridge are called, and which extensions they must admit.
struct WantedManifests {
  std::string file;
  std::vector<std::string> origins;  // in the Chromium family
  std::vector<std::string> addOns;   // in Firefox
};

// `bundle`: the directory that contains the program.
Examination examine(const std::filesystem::path& bundle, const WantedManifests& wanted, const QDBusConnection& bus);

// The parts of it that look only at files.

// `admitted`: the extensions that the manifest must admit.
ManifestState manifestState(const std::filesystem::path& manifest, const std::vector<std::string>& admitted);

// How the program of a desktop entry was installed.
BrowserPackaging packagingOf(std::string_view desktopEntry);

// The date and time of the last line of a history; empty if it has none.
std::string lastTimeIn(const std::filesystem::path& history);

// What the Tollvane that runs has said about itself.
RunningTollvane runningTollvane(const std::string& state);

}  // namespace tollvane
