// The sentences that differ between systems. Each system has a table of its own beside its platform's code
// (platform/linux/linux_wording.h). All other texts that the user reads are the same everywhere, and are written in the
// code that uses them.
#pragma once

#include <string_view>

namespace tollvane {

struct Wording {
  std::string_view isABackgroundPart;  // follows the name of an application without windows that made a sound
  std::string_view introduction;
  std::string_view dontSeeTheBell;
  std::string_view approveLoginItem;
  std::string_view changeNotAllowed;  // followed by the system's own reason
  std::string_view notFoundHere;      // about a browser
  std::string_view noOtherBrowsers;
  // The bell's tooltip while no sound can be noticed; empty: it says nothing about that.
  std::string_view noLogTool;
  std::string_view noSoundServer;
  std::string_view everythingStaysHere;  // follows the version number
};

}  // namespace tollvane
