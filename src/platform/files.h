// The few things that Tollvane does with files. Everything created here is readable by its user only.
// Failure is a false result, never an exception; nothing blocks on a file that is not a plain one.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tollvane {

class Files {
 public:
  virtual ~Files() = default;

  virtual bool exists(const std::filesystem::path& path) const = 0;

  // Makes the directory and what is missing above it. True when the directory is there afterwards.
  virtual bool createDirectories(const std::filesystem::path& directory) = 0;

  enum class Append {
    done,
    notOpened,  // no such file, or it cannot be opened for writing
    notWritten  // opened, but the bytes did not fit; the file is as it was
  };

  // Adds `bytes` at the end of an existing file: all of them or none. Never creates the file.
  virtual Append append(const std::filesystem::path& file, std::string_view bytes) = 0;

  // Makes `bytes` the whole content of `file`, in one step: a reader sees the old content or the new.
  virtual bool writeAtomically(const std::filesystem::path& file, std::string_view bytes) = 0;

  // Makes `bytes` the whole content of `file`, where it stands: what links to it sees the new content as well.
  virtual bool write(const std::filesystem::path& file, std::string_view bytes) = 0;

  // The whole content of a plain file of at most `most` bytes; absent when it is none, or cannot be read.
  virtual std::optional<std::string> read(const std::filesystem::path& file, std::size_t most) const = 0;

  // The names of a directory's entries, in no order; absent when it cannot be read.
  virtual std::optional<std::vector<std::string>> list(const std::filesystem::path& directory) const = 0;

  // False also when there is no such file.
  virtual bool contentsEqual(const std::filesystem::path& a, const std::filesystem::path& b) const = 0;

  // Copies a plain file with its permissions. `to` must not exist; what was copied of it goes again on failure.
  virtual bool copy(const std::filesystem::path& from, const std::filesystem::path& to) = 0;

  // Puts a file in the place of another, in one step.
  virtual bool rename(const std::filesystem::path& from, const std::filesystem::path& to) = 0;

  virtual bool remove(const std::filesystem::path& file) = 0;
};

}  // namespace tollvane
