// The sentences that name the system they are said on: one table a system. Everything else that the user reads is the
// same everywhere and stands where it is used.
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

inline constexpr Wording macWording = {
    .isABackgroundPart = " is a background part of macOS, so there is no window to bring forward.",
    .introduction =
        "Tollvane keeps track of which app or browser tab made each sound on your Mac. After a mystery "
        "ding, click the bell in your menu bar to see what it was. Click an entry to go straight to it.",
    .dontSeeTheBell =
        "Don't see the bell? If your menu bar is full, macOS hides extra icons, often behind the camera "
        "notch. Hide a few in System Settings, Menu Bar. You can also open Tollvane again from "
        "Applications to bring back this window.",
    .approveLoginItem = "Approve Tollvane in System Settings, General, Login Items.",
    .changeNotAllowed = "macOS didn't allow that change: ",
    .notFoundHere = "Not found on this Mac",
    .noOtherBrowsers = "Safari support is built in. Turn it on in Safari Settings, Extensions.",
    .everythingStaysHere = " · Everything stays on this Mac. Patent pending.",
};

inline constexpr Wording linuxWording = {
    .isABackgroundPart = " is a background part of the system, so there is no window to bring forward.",
    .introduction =
        "Tollvane keeps track of which app or browser tab made each sound on your computer. After a "
        "mystery ding, click the bell in your status bar to see what it was. Click an entry to go "
        "straight to it.",
    .dontSeeTheBell =
        "Don't see the bell? Some desktops show status icons only with an extension, or fold them away. "
        "You can also open Tollvane again from your applications to bring back this window.",
    .approveLoginItem = "Turn Tollvane on among the startup applications in your desktop's settings.",
    .changeNotAllowed = "The system didn't allow that change: ",
    .notFoundHere = "Not found on this computer",
    .noOtherBrowsers = "No other browsers were found on this computer.",
    .everythingStaysHere = " · Everything stays on this computer. Patent pending.",
};

}  // namespace tollvane
