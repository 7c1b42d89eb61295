// What the kernel says about processes, read from /proc at each call. Nothing is kept between calls. If a process is
// gone, or if we may not read this about it, the answer is absent or empty, never an error. Any thread. Source of the
// formats: proc(5), cgroups(7).
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/process_table.h"

namespace tollvane {

class ProcFs : public ProcessTable {
 public:
  // Tests pass a directory tree of their own.
  explicit ProcFs(std::filesystem::path root = "/proc");

  // Linux keeps no record of which process is responsible for another.
  std::optional<Pid> responsiblePid(Pid) const override { return std::nullopt; }
  std::optional<Pid> parentPid(Pid pid) const override;

  struct Status {
    Pid parent = 0;
    char state = '?';  // 'Z': it has ended, and its parent has not collected its exit status yet
    // Clock ticks since boot. A pid together with its start time names one process for good; a pid alone may be used
    // again.
    std::uint64_t startTime = 0;
    std::string command = {};  // the kernel's short name: at most 15 bytes
  };
  std::optional<Status> status(Pid pid) const;

  // The real path of the program. If its file was replaced on disk, the kernel's " (deleted)" is removed.
  std::optional<std::string> executable(Pid pid) const;

  // Whether the process runs a program at all, even if we may not know which: kernel threads do not, and neither do
  // processes that have ended.
  bool hasProgram(Pid pid) const;

  std::vector<std::string> arguments(Pid pid) const;  // argv, argv[0] included
  std::string command(Pid pid) const;                 // the kernel's short name: at most 15 bytes
  std::optional<std::string> environment(Pid pid, std::string_view name) const;
  // The values of several variables, in the order of their names; empty if nothing about the process can be read.
  std::vector<std::optional<std::string>> environment(Pid pid, std::span<const std::string_view> names) const;
  std::string cgroup(Pid pid) const;  // path in the unified hierarchy, "/user.slice/…"

  // What a person would call the program: the last component of the script if an interpreter runs one, of argv[0] if
  // that is only another name of the executable (a link), else of the executable; the kernel's short name if the
  // executable cannot be read. Empty if the process is gone.
  std::string programName(Pid pid) const;

  // The absolute path of the file that one of the process's arguments means: relative to its working directory, or, for
  // a bare name, found in its search path. Links are not followed. Absent if there is no such file.
  std::optional<std::string> fileNamed(Pid pid, std::string_view argument) const;

  // Whether `argument` is a name of the program at the real path `executable`, directly or through links.
  bool isNameOf(Pid pid, std::string_view argument, std::string_view executable) const;

  // All processes, in ascending order.
  std::vector<Pid> all() const;

  // Whether the process belongs to the user that runs this program.
  bool isOwn(Pid pid) const;

  // Whether the process has this program's root directory. A process in a container has another one.
  bool hasOurRoot(Pid pid) const;

  const std::filesystem::path& root() const { return root_; }

 private:
  std::string path(Pid pid, std::string_view file) const;

  std::filesystem::path root_;
};

}  // namespace tollvane
