// Which application a process belongs to: its desktop entry, or what else is known about it.
//
//   ProcFs processes;
//   DesktopEntries entries;
//   XcbWindows windows(clock);
//   Applications applications(processes, entries, windows);
//   if (auto owner = applications.of(4711)) use(owner->id, applications.nameOf(4711, *owner));  // "firefox-esr"
//
// Only the process itself is examined, never its parents. The evidence, the strongest first: the sandbox that it runs
// in, the desktop entry that started it, its unit, its program, its windows; last of all what it is in the background.
// One thread at a time; the constructor's arguments must outlive the object.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/apps/background_programs.h"
#include "platform/linux/apps/desktop_entries.h"
#include "platform/linux/apps/running_program.h"
#include "platform/linux/kernel/proc_fs.h"
#include "platform/linux/kernel/unit_name.h"
#include "platform/linux/x11/x11_windows.h"

namespace tollvane {

// What is known about the application that a process belongs to.
struct Ownership {
  DesktopEntries::Entry entry;  // null if only a sandbox's id or a window is known
  std::string id;               // the entry's id, else the sandbox's; empty if only a window is known
  std::string windowClass;
  std::string backgroundName;  // see BackgroundPrograms; empty if there is an entry or an id
  bool hasWindow = false;      // windows are searched only if `entry` alone does not make it an ordinary application

  // Whether the process belongs to no application, and is known by the name of a background program only.
  bool isBackground() const { return !backgroundName.empty() && !hasWindow; }

  bool isRegular() const { return hasWindow || (entry != nullptr && entry->isRegular()); }
};

class Applications {
 public:
  // `background`: null if names of background programs are not wanted.
  Applications(const ProcFs& processes, DesktopEntries& entries, X11Windows& windows,
               const BackgroundPrograms* background = nullptr)
      : processes_(processes), entries_(entries), windows_(windows), background_(background), executables_(entries) {}

  enum class Wanted { any, regular };

  // Absent if the process is gone, or belongs to no application. If an ordinary one is wanted, it is also absent for
  // any other, and no time is spent on names of background programs.
  std::optional<Ownership> of(Pid pid, Wanted wanted = Wanted::any) const;

  // The same for a process of which something is known already. The entries are taken as they are, so refresh them
  // before the first of several questions.
  std::optional<Ownership> of(RunningProgram& program, Wanted wanted) const;
  RunningProgram program(Pid pid) const { return {pid, processes_, entries_, executables_}; }

  // The name that the desktop shows: the entry's own, else the end of the id ("org.example.Player" -> "Player"), else
  // that of the background program, else the window's class, else the program's name. Valid UTF-8.
  std::string nameOf(Pid pid, const Ownership& application) const;

  const ProcFs& processes() const { return processes_; }
  DesktopEntries& entries() const { return entries_; }
  X11Windows& windows() const { return windows_; }
  Executables& executables() const { return executables_; }

 private:
  Ownership identify(RunningProgram& program, const UnitName& unit) const;
  std::optional<Ownership> fromSandbox(Pid pid, const UnitName& unit) const;
  DesktopEntries::Entry launchedEntry(Pid pid) const;
  DesktopEntries::Entry unitEntry(const UnitName& unit) const;
  bool isTrusted(const DesktopEntries::Entry& unitEntry, RunningProgram& program) const;
  void lookForWindows(Pid pid, Ownership& application) const;

  const ProcFs& processes_;
  DesktopEntries& entries_;
  X11Windows& windows_;
  const BackgroundPrograms* background_;
  mutable Executables executables_;
};

}  // namespace tollvane
