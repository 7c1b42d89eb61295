// All desktop entries of the user's desktop. Read at the first look-up, and read again (only what changed) when a
// look-up finds that their folders changed. Nothing runs in between. One thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/linux/apps/desktop_entry.h"
#include "platform/linux/apps/desktop_folders.h"
#include "platform/linux/apps/program_index.h"
#include "platform/linux/kernel/folders.h"

namespace tollvane {

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
