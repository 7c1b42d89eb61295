// Reading files that somebody else may have written, or that are no files at all: nothing here waits for the other end
// of a pipe, and nothing reads more than it was allowed to. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/posix/unique_fd.h"

namespace tollvane {

// Opens a plain file for reading; none if it is anything else, or cannot be read.
UniqueFd openPlainFile(const std::string& path);

// Reads until the buffer is full or the file ends. The number of bytes; absent if reading failed.
std::optional<std::size_t> readFully(int descriptor, char* buffer, std::size_t size);

// The whole content of a plain file of at most `most` bytes; absent if it is longer, cannot be read, or is anything but
// a plain file.
std::optional<std::string> readPlainFile(const std::string& path, std::size_t most);

// What a kernel file (one below /proc) says, cut off after `most` bytes; absent if it cannot be read.
std::optional<std::string> readKernelFile(const std::string& path, std::size_t most);

// The path without links, "." and ".."; absent if there is no such file.
std::optional<std::string> realPath(const std::string& path);

}  // namespace tollvane
