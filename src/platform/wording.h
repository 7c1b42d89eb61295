// The sentences that name the system they are said on. Each system has a table of its own beside its platform's code
// (platform/linux/linux_wording.h); everything else that the user reads is the same everywhere, and stands in the code
// that uses it.
#pragma once

#include <string_view>

namespace tollvane {

struct Wording {
  std::string_view isABackgroundPart;  // follows the name of something without windows that made a sound
  std::string_view introduction;
  std::string_view dontSeeTheBell;
  std::string_view approveLoginItem;
  std::string_view changeNotAllowed;  // followed by the system's own words
  std::string_view notFoundHere;      // a browser
  std::string_view noOtherBrowsers;
  std::string_view everythingStaysHere;  // follows the version
};

}  // namespace tollvane
