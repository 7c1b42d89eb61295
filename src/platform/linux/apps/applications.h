// Which application a process belongs to.
//
//   ProcFs processes;
//   DesktopEntries entries;
//   NoX11Windows windows;
//   Applications applications(processes, entries, windows);
//   applications.desktopIdOf(4711);  // "firefox-esr"
//
// The process itself is asked, never its parents. The evidence, the strongest first: the sandbox that it runs in, the
// desktop entry that it was started by, its unit, its program, its windows. One thread at a time; whoever makes the
// three parts keeps them alive.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/clock.h"
#include "platform/linux/apps/desktop_entries.h"
#include "platform/linux/apps/proc_fs.h"
#include "platform/linux/apps/unit_name.h"
#include "platform/linux/apps/x11_windows.h"

namespace tollvane {

// What is known about the application that a process belongs to.
struct Ownership {
  DesktopEntries::Entry entry;  // null when only a sandbox's id or a window is known
  std::string id;               // the entry's, else the sandbox's; empty when only a window is known
  std::string windowClass;
  bool hasWindow = false;  // looked for only where the entry does not make it an ordinary application already

  bool isRegular() const { return hasWindow || (entry != nullptr && entry->isRegular()); }
};

class Applications {
 public:
  // With a clock, searches within a tenth of a second share one look at all processes: one that has come since is not
  // found yet. Whoever has a clock keeps it alive.
  Applications(const ProcFs& processes, DesktopEntries& entries, X11Windows& windows, const Clock* sharing = nullptr);

  // Absent when the process is gone, or belongs to no application.
  std::optional<Ownership> of(Pid pid) const;

  // The desktop entry's id without ".desktop", else the id that the process's sandbox has.
  std::optional<std::string> desktopIdOf(Pid pid) const;

  // The name that the desktop shows: the entry's own, else the end of the id ("org.example.Player" -> "Player"), the
  // window's class, the program's name. Valid UTF-8.
  std::string nameOf(Pid pid, const Ownership& application) const;

  // A process, and the application that it belongs to.
  struct Process {
    Pid pid = 0;
    std::uint64_t startTime = 0;  // as ProcFs tells it
    Ownership application;
  };

  // All of the user's processes that belong to an application, in ascending order.
  std::vector<Process> processes() const;

  // The user's processes that belong to one of these entries, in ascending order. Whoever knows the entries' programs
  // for ones that are recognised by their executables, and that are no scripts, says so, and is spared a close look at
  // every process when none of them runs.
  std::vector<Process> processesOf(const ProgramIndex::Entries& wanted, bool knownPrograms) const;

  DesktopEntries& entries() const { return entries_; }

 private:
  // A search for an application's processes.
  struct Search {
    const ProgramIndex::Entries& wanted;
    bool knownPrograms;  // recognised by their executables, and no scripts
    bool contained;      // some run in a Flatpak or a Snap
    std::vector<Pid> withWindows;
  };
  // All that most processes are asked for.
  struct Seen {
    Pid pid = 0;
    std::optional<std::string> executable;
  };
  struct Program;  // what is asked about the process's own program, each thing once

  std::optional<Process> process(Pid pid) const;  // of the user's own
  const std::vector<Seen>& everybody() const;
  Ownership identify(Pid pid, Program& program) const;
  std::optional<Ownership> fromSandbox(Pid pid, const UnitName& unit) const;
  DesktopEntries::Entry launchedEntry(Pid pid) const;
  DesktopEntries::Entry unitEntry(const UnitName& unit) const;
  bool isTrusted(const DesktopEntries::Entry& unitEntry, Program& program) const;
  bool mayBelong(const Seen& process, const Search& search) const;
  void lookForWindows(Pid pid, Ownership& application) const;

  // What is known about an executable, whoever runs it.
  struct Executable {
    const ProgramIndex::Entries* entries = nullptr;  // those that may be its own
    bool runsScripts = false;
    std::optional<bool> inContainer = {};  // asked for at the first need
  };
  Executable& executable(const std::string& path) const;

  const ProcFs& processes_;
  DesktopEntries& entries_;
  X11Windows& windows_;
  const Clock* sharing_;
  mutable std::vector<Seen> everybody_;
  mutable Instant everybodyUntil_ = Instant::min();
  mutable std::unordered_map<std::string, Executable> executables_;  // by path; holds until the entries change
  mutable std::uint64_t generation_ = 0;
};

}  // namespace tollvane
