// The program that one process runs, and the desktop entries that may be the program's own. One thread at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/linux/apps/desktop_entries.h"
#include "platform/linux/kernel/proc_fs.h"

namespace tollvane {

// What is known about executables, whichever process runs them. Kept until the desktop entries change.
class Executables {
 public:
  struct Executable {
    const ProgramIndex::Entries* entries = nullptr;  // those that may be its own, the best first
    bool runsScripts = false;                        // it is an interpreter: what it runs is another file
    // It is a launcher, or stands in a Flatpak's or Snap's own file system, or cannot be seen from here.
    bool mayBeContained = false;
  };

  explicit Executables(const DesktopEntries& entries) : entries_(entries) {}

  // Valid until the entries change.
  const Executable& at(const std::string& path);

 private:
  const DesktopEntries& entries_;
  std::unordered_map<std::string, Executable> known_;  // by path
  std::uint64_t generation_ = 0;                       // of the entries
};

// Whether the file is a program itself, and not a script, which may start a program of any name.
bool isBinary(const std::string& program);

// Asks the kernel for each thing once, at the first need. For one question: the process may run another program later.
class RunningProgram {
 public:
  // The others outlive it.
  RunningProgram(Pid pid, const ProcFs& processes, const DesktopEntries& entries, Executables& executables)
      : pid_(pid), processes_(processes), entries_(entries), executables_(executables) {}

  // False for a process that has ended, even if its parent has not taken note yet.
  bool isAlive();

  // All entries whose program this is, the best first.
  const ProgramIndex::Entries& entries();

  // The one among them that this process was started by, as far as its command line tells; null if none fits.
  DesktopEntries::Entry entry();

 private:
  const std::optional<std::string>& executable();
  const std::vector<std::string>& arguments();
  const ProgramIndex::Entries& find();
  bool isAmbiguous();
  bool isCalled(const DesktopEntry& candidate);
  bool isReachedBy(const DesktopEntry& candidate);
  bool wasGiven(const DesktopEntry& candidate);

  const Pid pid_;
  const ProcFs& processes_;
  const DesktopEntries& entries_;
  Executables& executables_;
  bool knowsExecutable_ = false;
  std::optional<std::string> executable_;
  std::optional<std::vector<std::string>> arguments_;
  const ProgramIndex::Entries* found_ = nullptr;
};

}  // namespace tollvane
