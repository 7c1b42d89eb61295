// The few things that Tollvane does with files. Everything created here is readable by its user only.
// Failure is a false result, never an exception; nothing blocks on a file that is not a plain one.
#pragma once

#include <filesystem>
#include <string_view>

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
};

}  // namespace tollvane
