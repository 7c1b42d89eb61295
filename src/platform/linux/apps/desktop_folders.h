// The folders in which desktop entries stand, and how to notice that something in them changed without watching them:
// no descriptor, no timer, no wakeup, only a few `stat` calls at each question. One thread at a time.
// Source: freedesktop.org, XDG Base Directory 0.8 and Desktop Entry 1.5 (file naming).
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tollvane {

// Which file stands at a path, and in which state; all zero for none.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t modified = 0;  // nanoseconds since 1970
  std::int64_t changed = 0;   // the same for its mode and owner, too; nobody can set it back
  std::int64_t size = 0;

  static FileStamp of(const std::string& path);
  static FileStamp of(const struct stat& status);
  bool operator==(const FileStamp&) const = default;
};

struct DesktopFile {
  std::string id;  // "kde4/example.desktop" -> "kde4-example"
  std::string path;
  FileStamp stamp;
};

class DesktopFolders {
 public:
  explicit DesktopFolders(std::vector<std::string> dataFolders);

  // Reads the folders: all entries there are, the file that wins an id before those that lose it.
  std::vector<DesktopFile> list();

  // Whether `list` may answer differently than it did the last time.
  bool changed() const;

 private:
  struct Folder {
    std::string path;
    FileStamp stamp;
  };

  void listFolder(const std::string& path, const std::string& prefix, int depth, std::vector<DesktopFile>& files);

  std::vector<std::string> roots_;
  std::vector<Folder> folders_;  // all that were read, or looked for in vain
  // A folder that was modified within one tick of the file system's clock before it was read may have been modified
  // again in the same tick, and would not show it.
  bool unsettled_ = false;
  bool listed_ = false;
};

}  // namespace tollvane
