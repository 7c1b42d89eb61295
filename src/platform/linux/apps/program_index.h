// Finds the desktop entry that a program belongs to. Made from all entries at once, and made anew when they change.
//
// Every answer is a list, the best entry first: ordinary applications before hidden ones and tools, then the entry that
// gives its program the fewest arguments (the browser itself before its private window). Only all() includes the
// entries of bare interpreters. One thread at a time.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/linux/apps/desktop_entry.h"

namespace tollvane {

class ProgramIndex {
 public:
  using Entry = std::shared_ptr<const DesktopEntry>;
  using Entries = std::vector<Entry>;

  explicit ProgramIndex(Entries entries);

  // By the real path of a running program. In this order: an entry's own program; its TryExec; another program in the
  // same folder as an entry's (/opt/example/browser beside /opt/example/example-browser); a program of the same name
  // elsewhere (/usr/lib/example/example for /usr/bin/example); an entry's StartupWMClass or id, in any case.
  const Entries& ofExecutable(const std::string& executable) const;

  // By the script that an interpreter runs: a real path, or the name of a module, class or Windows program.
  const Entries& ofScript(const std::string& script) const;

  // By a window's class, which is an entry's StartupWMClass or id, in any case.
  const Entries& ofWindowClass(std::string_view windowClass) const;

  // All entries, the best first.
  const Entries& all() const { return entries_; }

  inline static const Entries none;

 private:
  using Table = std::unordered_map<std::string, Entries>;

  const Entries* inFolder(std::string_view folder, std::string_view name) const;

  Entries entries_;
  Table byProgram_;  // the key is a path, with and without links followed
  Table byTryExec_;
  Table byFolder_;
  Table byName_;
  Table byScript_;
  Table byClass_;
};

}  // namespace tollvane
