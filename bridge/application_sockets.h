// Where the application may listen. Pure; any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tollvane::bridge {

// Paths of sockets, the best one first. If `program`, the bridge's own real path, is the copy that the application has
// made in its support directory, then that directory is the right one, whatever the browser's environment says.
// `dataFolder`: the one of this environment; absent if it has none. `socketFolder` holds a second socket of the
// application, for a home that can hold none, or that another computer uses as well; absent if the user has no such
// folder.
std::vector<std::string> applicationSockets(const std::filesystem::path& program,
                                            const std::optional<std::filesystem::path>& dataFolder,
                                            const std::optional<std::filesystem::path>& socketFolder);

}  // namespace tollvane::bridge
