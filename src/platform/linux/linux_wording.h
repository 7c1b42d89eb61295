// The sentences of platform/wording.h as people read them on Linux. Constant data; any thread.
#pragma once

#include "platform/wording.h"

namespace tollvane {

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
    .noLogTool = "Tollvane can't hear any sounds: its program TollvaneLog doesn't run",
    .noSoundServer = "Tollvane can't hear any sounds: no sound server is running",
    .everythingStaysHere = " · Everything stays on this computer. Patent pending.",
};

}  // namespace tollvane
