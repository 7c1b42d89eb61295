// What Tollvane finds on this computer, for the doctor. Values only; the platform fills them, and src/doctor judges
// them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/login_service.h"

namespace tollvane {

// How a browser was installed, which decides whether it can start a program outside of itself.
enum class BrowserPackaging { ordinary, flatpak, snap };

// The manifest that lets a browser start the bridge.
enum class ManifestState {
  none,        // there is no such file
  right,       // it names a bridge that can be started, and admits our extension
  noBridge,    // the bridge that it names cannot be started
  unreadable,  // it is no manifest of ours
};

struct ExaminedBrowser {
  std::string bundleID;
  std::string name;  // what the desktop calls it
  std::vector<BrowserPackaging> packagings = {};
  bool isRunning = false;
  ManifestState ownManifest = ManifestState::none;     // in the user's home; it counts first
  ManifestState systemManifest = ManifestState::none;  // for all users
};

// What the Tollvane that runs says about itself.
struct ExaminedExtension {
  std::string bundleID;  // of its browser; empty if it is unknown
  std::string version;
  std::string lastReport;  // date and time; empty: it has reported nothing since it was linked
};
struct RunningTollvane {
  std::string version;      // empty: it does not answer
  bool isOutdated = false;  // its program has been replaced or removed since it was started
  bool hearsLogTool = true;
  bool hearsSoundServer = true;
  std::vector<ExaminedExtension> extensions;
};

// Where the bell can be shown.
enum class BellPlace { none, oldTray, statusBar, shell };

// How windows of other applications come forward.
enum class WindowWay { none, x11, sway, kwin, shell, others };

struct Examination {
  std::optional<std::filesystem::path> home;
  std::filesystem::path bundle;
  std::vector<std::string> missingParts;  // of the bundle
  std::optional<RunningTollvane> running;
  std::vector<std::string> soundServers;           // those that answer
  std::string lastSound;                           // date and time of the history's last line; empty: no line yet
  std::optional<std::string> notificationService;  // its name
  std::string bar;                                 // the program that shows status icons
  std::string desktop;                             // what the desktop calls itself
  std::vector<ExaminedBrowser> browsers;           // those that are installed or run
  std::filesystem::path supportFolder;
  std::filesystem::path settingsFile;
  BellPlace bellPlace = BellPlace::none;
  WindowWay windowWay = WindowWay::none;
  LoginStatus login = LoginStatus::notRegistered;
  bool hasSessionBus = false;
  bool supportFolderIsWritable = false;
  bool settingsAreReadable = true;  // also if there is no such file yet
};

}  // namespace tollvane
