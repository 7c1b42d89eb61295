// Reading whole files that somebody else wrote, or that are no files at all. Any thread.
#pragma once

#include <optional>
#include <string>

namespace tollvane {

// The content of a plain file of at most `limit` bytes; absent when it is longer, cannot be read, or is anything but a
// plain file. Never waits for the other end of a pipe.
std::optional<std::string> readPlainFile(const std::string& path, std::size_t limit);

// What a kernel file (one below /proc) says, cut off after `limit` bytes; absent when it cannot be read.
std::optional<std::string> readKernelFile(const std::string& path, std::size_t limit);

// `realpath`, with failure as "absent".
std::optional<std::string> realPath(const std::string& path);

}  // namespace tollvane
