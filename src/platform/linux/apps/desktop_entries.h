// All desktop entries of the user's desktop. Read at the first look-up, and read again (only what changed) when a
// look-up finds that their folders changed. Nothing runs in between. One thread at a time.
// Source: freedesktop.org, XDG Base Directory 0.8 and Desktop Entry 1.5 (file naming).
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/linux/apps/desktop_entry.h"
#include "platform/linux/apps/program_index.h"
#include "platform/linux/kernel/folders.h"

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

// The folders in which desktop entries stand, and how to notice that something in them changed without watching them:
// no descriptor, no timer, no wakeup, only a few `stat` calls at each question.
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

class DesktopEntries {
 public:
  using Entry = ProgramIndex::Entry;

  explicit DesktopEntries(DesktopEnvironment environment = DesktopEnvironment::current());

  // Brings everything up to date. Whoever looks something up calls this first, and once for a whole chain of look-ups.
  void refresh();

  // Reads the folders at the next refresh even where they look unchanged. For whoever saw that an entry's file was
  // written to in place, which its folder does not show.
  void distrust() { distrusted_ = true; }

  // Whether the file of the entry is still the one that was read.
  bool isFresh(const DesktopEntry& entry) const;

  // Counts the changes: what was concluded from the entries holds as long as this stays the same.
  std::uint64_t generation() const { return generation_; }

  // Null where there is none. Includes hidden ones; "Example.desktop" and "example" are tried for "example.desktop",
  // in this order.
  Entry withId(std::string_view id) const;

  Entry withPath(std::string_view path) const;
  Entry withFlatpakId(std::string_view flatpakId) const;
  Entry withSnapInstance(std::string_view instance) const;

  // An ordinary application whose name on this desktop is exactly this.
  Entry named(std::string_view name) const;

  const ProgramIndex& programs() const { return programs_; }
  const DesktopEnvironment& environment() const { return environment_; }

 private:
  struct File {
    FileStamp stamp;
    Entry entry;  // null for a file that holds no application
  };

  File& read(const DesktopFile& file, std::unordered_map<std::string, File>& known);

  DesktopEnvironment environment_;
  DesktopFolders folders_;
  std::unordered_map<std::string, File> files_;  // by path
  std::unordered_map<std::string, Entry> byId_;
  std::unordered_map<std::string, Entry> byLowerId_;
  ProgramIndex programs_{{}};
  std::uint64_t generation_ = 0;
  bool distrusted_ = false;
};

}  // namespace tollvane
