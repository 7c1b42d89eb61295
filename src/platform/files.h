// The few things that Tollvane does with files. Everything created here is readable by its user only. Failure is a
// false or absent result, never an exception; nothing blocks on a file that is not a plain one. Callable from any
// thread.
//
//   files.createDirectories(folder);
//   if (files.append(folder / "history.txt", "one line\n") == Files::Append::notOpened)
//     files.writeAtomically(folder / "history.txt", "one line\n");
//   if (const auto text = files.read(folder / "settings.json", 1 << 20)) use(*text);
//   if (const auto names = files.list(folder))
//     for (const std::string& name : *names) files.remove(folder / name);
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

  // Makes the directory and its missing parents. True if the directory exists afterwards.
  virtual bool createDirectories(const std::filesystem::path& directory) = 0;

  enum class Append {
    done,
    notOpened,  // there is no such file, or it cannot be opened for writing
    notWritten  // opened, but not all bytes could be written; the file is as it was
  };

  // Adds `bytes` at the end of an existing file: all of them or none. Never creates the file.
  virtual Append append(const std::filesystem::path& file, std::string_view bytes) = 0;

  // Replaces the whole content of `file` in one step: a reader sees the old content or the new.
  virtual bool writeAtomically(const std::filesystem::path& file, std::string_view bytes) = 0;

  // Replaces the whole content of `file` in place: links to the file show the new content as well.
  virtual bool write(const std::filesystem::path& file, std::string_view bytes) = 0;

  // The whole content of a plain file; absent if it is not a plain file, is longer than `most` bytes, or cannot be
  // read.
  virtual std::optional<std::string> read(const std::filesystem::path& file, std::size_t most) const = 0;

  // The names of a directory's entries, in no order; absent if it cannot be read.
  virtual std::optional<std::vector<std::string>> list(const std::filesystem::path& directory) const = 0;

  // False, too, if one of the files does not exist.
  virtual bool contentsEqual(const std::filesystem::path& a, const std::filesystem::path& b) const = 0;

  // Whether the user can start this program: not if it lies on a file system on which no program may be started.
  virtual bool canBeStarted(const std::filesystem::path& program) const = 0;

  // Copies a plain file with its permissions. `to` must not exist. After a failure, nothing is left at `to`.
  virtual bool copy(const std::filesystem::path& from, const std::filesystem::path& to) = 0;

  // Puts the file `from` in the place of `to`, in one step.
  virtual bool rename(const std::filesystem::path& from, const std::filesystem::path& to) = 0;

  // Removes a file, a link (and not what it leads to), or an empty directory.
  virtual bool remove(const std::filesystem::path& path) = 0;
};

}  // namespace tollvane
