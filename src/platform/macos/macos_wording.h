// The sentences of platform/wording.h as people read them on macOS. Constant data; any thread.
#pragma once

#include "platform/wording.h"

namespace tollvane {

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
    .noLogTool = "",
    .noSoundServer = "",
    .everythingStaysHere = " · Everything stays on this Mac. Patent pending.",
};

// The bell's tooltip, and an alert, if macOS does not let this account read the system log.
inline constexpr std::string_view logRefusedToolTip =
    "Tollvane can't hear any sounds: this account isn't an administrator";
inline constexpr std::string_view logRefusedTitle = "Tollvane can't hear any sounds";
inline constexpr std::string_view logRefused =
    "macOS lets only administrators read the system log, which tells of sounds, and this account isn't one. An "
    "administrator can change that in System Settings, Users & Groups. Then log in again.";

// Why Tollvane cannot start at login from the place to which it was downloaded. Follows `changeNotAllowed`.
inline constexpr std::string_view moveToApplications =
    "Move Tollvane to your Applications folder and open it from there.";

}  // namespace tollvane
