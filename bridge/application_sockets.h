// Where the application may listen. Pure; any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tollvane::bridge {

// Paths of sockets, the best one first. If `program`, the bridge's own real path, is the copy that the application has
// made in its support directory, then that directory is the right one, whatever the browser's environment says.
// `dataFolder`: the one of this environment; absent if it has none.
std::vector<std::string> applicationSockets(const std::filesystem::path& program,
                                            const std::optional<std::filesystem::path>& dataFolder);

}  // namespace tollvane::bridge
