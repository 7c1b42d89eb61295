// Values of desktop entries' keys. Pure; any thread. Source: freedesktop.org, Desktop Entry 1.5 ("Exec", value types).
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tollvane {

// A text as a key's value.
std::string keyFileText(std::string_view text);

// An argument as the Exec key wants it: in double quotes, with the characters escaped that are special there or in the
// file.
std::string execArgument(std::string_view argument);

// The Exec key for a program at any path, without arguments.
std::string execCommand(const std::filesystem::path& program);

}  // namespace tollvane
