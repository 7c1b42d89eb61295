// The bundle identifiers by which the rest of Tollvane knows browsers, in the words of this desktop. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tollvane {

// The ids of the desktop entries that an application with this identifier may have here: as a Debian package or one of
// its maker's, as a Flatpak, as a Snap; the most usual first. An identifier that is not in the table is itself tried as
// an id. Empty for an application that does not exist on Linux.
std::vector<std::string> desktopIdsOfBundle(std::string_view bundleID);

// The identifier of the application whose desktop entry has this id; empty for one that is not in the table.
std::string_view bundleOfDesktopId(std::string_view desktopID);

// Whether the identifier is in the table.
bool isKnownBundle(std::string_view bundleID);

}  // namespace tollvane
