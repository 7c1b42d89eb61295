// How Tollvane knows that the desktop session has started it, and not a person, who wants to see something happen.
#pragma once

namespace tollvane {

// A variable in the environment, set to "1" by the autostart entry (Exec=env TOLLVANE_STARTED_AT_LOGIN=1 …): Tollvane
// has no command line. Not passed on to what Tollvane starts.
inline constexpr const char* startedAtLogin = "TOLLVANE_STARTED_AT_LOGIN";

}  // namespace tollvane
