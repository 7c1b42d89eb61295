// The desktop entry by which shells know Tollvane's windows: their name and icon, a way to start it, and a way to its
// menu. A package brings one for all users; a bundle that was only unpacked writes one for its user. Any thread.
// Source: freedesktop.org, Desktop Entry 1.5.
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "platform/posix/posix_files.h"

namespace tollvane {

inline constexpr std::string_view launcherEntryPath = "applications/tollvane.desktop";  // in a data folder

// Writes the entry into the user's data folder `data`, unless one of the other data folders `others` has one, or the
// user has another one there. An entry of ours whose program is gone is written anew. Fails in silence.
void writeLauncherEntry(PosixFiles& files, const std::filesystem::path& data,
                        const std::vector<std::filesystem::path>& others, const std::filesystem::path& bundle);

// Whether this file is one that writeLauncherEntry() has written.
bool isOwnLauncherEntry(const PosixFiles& files, const std::filesystem::path& file);

}  // namespace tollvane
