// Files through the kernel's own calls: modes are set as things are made, never afterwards. After a failure, errno is
// the kernel's reason.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/files.h"
#include "platform/posix/unique_fd.h"

namespace tollvane {

class PosixFiles : public Files {
 public:
  bool exists(const std::filesystem::path& path) const override;
  bool createDirectories(const std::filesystem::path& directory) override;
  Append append(const std::filesystem::path& file, std::string_view bytes) override;

  // The old content is replaced only once the new one is on the disk. A symbolic link is followed, not replaced.
  bool writeAtomically(const std::filesystem::path& file, std::string_view bytes) override;
  bool write(const std::filesystem::path& file, std::string_view bytes) override;
  std::optional<std::string> read(const std::filesystem::path& file, std::size_t most) const override;
  std::optional<std::vector<std::string>> list(const std::filesystem::path& directory) const override;
  bool contentsEqual(const std::filesystem::path& a, const std::filesystem::path& b) const override;
  bool canBeStarted(const std::filesystem::path& program) const override;
  bool copy(const std::filesystem::path& from, const std::filesystem::path& to) override;
  bool rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
  bool remove(const std::filesystem::path& path) override;
};

// Reading files that somebody else may have written, or that are no files at all: nothing here waits for the other end
// of a pipe, and nothing reads more than it was allowed to. Any thread.

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
