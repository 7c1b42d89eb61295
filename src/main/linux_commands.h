// The commands that need no bell: they print an answer and end. Main thread only; to be run instead of the application.
#pragma once

#include <filesystem>
#include <optional>

namespace tollvane {

// Runs the command that the arguments name, and returns the exit code of the program. Absent if they name none; then
// the application is to be started. `bundle`: the directory that contains the program.
std::optional<int> runCommand(int argc, char* argv[], const std::filesystem::path& bundle);

}  // namespace tollvane
