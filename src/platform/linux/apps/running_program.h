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

// What is known about executables, independently of the processes that run them. Kept until the desktop entries change.
class Executables {
 public:
  struct Executable {
    const ProgramIndex::Entries* entries = nullptr;  // the entries that may be its own, the best first
    bool runsScripts = false;                        // it is an interpreter, so the program that counts is another file
    // It is a launcher, or it is in the file system of a Flatpak or Snap, or it cannot be seen from here.
    bool mayBeContained = false;
  };

  explicit Executables(const DesktopEntries& entries) : entries_(entries) {}

  // The result is valid until the next call.
  const Executable& at(const std::string& path);

 private:
  const DesktopEntries& entries_;
  std::unordered_map<std::string, Executable> known_;  // the key is the path
  std::uint64_t generation_ = 0;                       // of the entries that `known_` was made from
};

// Whether the file is a program itself, and not a script, which may start a program of any name.
bool isBinary(const std::string& program);

// Asks the kernel for each fact once, when it is first needed. To be used for one question only, because the process
// may run another program later.
class RunningProgram {
 public:
  // The other arguments must outlive it.
  RunningProgram(Pid pid, const ProcFs& processes, const DesktopEntries& entries, Executables& executables)
      : pid_(pid), processes_(processes), entries_(entries), executables_(executables) {}

  // False if the process has ended, even if it is still a zombie.
  bool isAlive();

  // All entries whose program this is, the best first.
  const ProgramIndex::Entries& entries();

  // The one of them that started this process, as far as its command line tells; null if none fits.
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
