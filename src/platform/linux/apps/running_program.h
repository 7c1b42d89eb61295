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

  Pid pid() const { return pid_; }

  // The same process, to be looked up among other entries. What is known about it already is not asked again.
  RunningProgram among(const DesktopEntries& entries, Executables& executables);

  // False if it is an interpreter that was given no file to run: a shell that a person or a command line tells what to
  // do.
  bool runsFile();

  // Absent if the kernel does not tell.
  const std::optional<std::string>& executable();

  const std::vector<std::string>& arguments();

  // False if the process has ended, even if it is still a zombie.
  bool isAlive();

  // All entries whose program this is, the best first.
  const ProgramIndex::Entries& entries();

  // The one of them that started this process, as far as its command line tells; null if none fits.
  DesktopEntries::Entry entry();

 private:
  // The script that an interpreter runs.
  struct Script {
    std::optional<std::string> name;      // as the command line gives it; absent if it runs none
    std::optional<std::string> file;      // absent if the name leads to no file
    std::optional<std::string> realFile;  // absent if nobody has asked yet
  };

  const Script& script();
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
  std::optional<Script> script_;
  const ProgramIndex::Entries* found_ = nullptr;
};

}  // namespace tollvane
