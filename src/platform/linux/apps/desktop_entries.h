// All desktop entries of the user's desktop. The first refresh() reads them, and a later one reads again what has
// changed. Nothing runs in between. One thread at a time.
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
#include "platform/linux/kernel/write_watch.h"

namespace tollvane {

// Which file is at a path, and in which state; all members are 0 if none exists.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t modified = 0;  // nanoseconds since 1970
  std::int64_t changed = 0;   // like `modified`, but for mode and owner too; no program can set it back
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

// The folders that contain desktop entries. Changes are noticed at each question, by a few `stat` calls and by what the
// kernel has noted about files that were written to in place: no timer, no wakeup.
class DesktopFolders {
 public:
  // `ending`: of the files' names.
  DesktopFolders(std::vector<std::string> folders, std::string_view ending);

  // Reads the folders and returns all entries. If several files have the same id, the one that counts is first.
  std::vector<DesktopFile> list();

  // Whether list() may now return something else than the last time, or one of its files has another content.
  bool changed();

 private:
  struct Known {
    std::string path;
    FileStamp stamp;
  };

  void listFolder(const std::string& path, const std::string& prefix, int depth, std::vector<DesktopFile>& files);

  std::vector<std::string> roots_;
  std::string_view ending_;
  std::vector<Known> folders_;  // all that were read, or were missing when they were looked for
  std::vector<Known> links_;    // all links in them, which may lead out of them; with the stamp of what they lead to
  std::vector<Known> files_;    // all files
  WriteWatch writes_;
  // Whether a folder or file changed so shortly before it was read that another change may get the same time stamp and
  // would not show.
  bool unsettled_ = false;
  bool listed_ = false;
};

class DesktopEntries {
 public:
  using Entry = ProgramIndex::Entry;

  // Files of other kinds are read like entries, too: each kind knows its folders and its format.
  enum class Kind {
    applications,
    autostart,    // programs that the desktop starts with the session
    busServices,  // D-Bus service files, see readBusService()
  };

  explicit DesktopEntries(DesktopEnvironment environment = DesktopEnvironment::current(),
                          Kind kind = Kind::applications);

  // Brings everything up to date. To be called before a look-up, and only once before a series of look-ups.
  void refresh();

  // Counts the changes: conclusions from the entries are valid as long as this number stays the same.
  std::uint64_t generation() const { return generation_; }

  // These return null if there is no such entry, and find hidden entries too. withId() tries the id as it is, then
  // without ".desktop", then ignoring case.
  Entry withId(std::string_view id) const;

  Entry withPath(std::string_view path) const;
  Entry withFlatpakId(std::string_view flatpakId) const;
  Entry withSnapInstance(std::string_view instance) const;

  // The ordinary application whose name on this desktop is exactly this; null if none exists.
  Entry named(std::string_view name) const;

  const ProgramIndex& programs() const { return programs_; }
  const DesktopEnvironment& environment() const { return environment_; }

 private:
  struct File {
    FileStamp stamp;
    Entry entry;           // null if the file describes no application
    bool settled = false;  // false if the file was so new when it was read that a later change may have the same stamp
  };

  File& read(const DesktopFile& file, std::unordered_map<std::string, File>& known);

  DesktopEnvironment environment_;
  Kind kind_;
  DesktopFolders folders_;
  std::unordered_map<std::string, File> files_;  // the key is the path
  std::unordered_map<std::string, Entry> byId_;
  std::unordered_map<std::string, Entry> byLowerId_;
  ProgramIndex programs_{{}};
  std::uint64_t generation_ = 0;
};

}  // namespace tollvane
