// What the kernel tells about processes, read from /proc at each call. Nothing is kept between calls. A process that is
// gone, or that belongs to another user, is absent or empty in every answer, never an error. Any thread.
// Source of the formats: proc(5), cgroups(7).
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/process_table.h"

namespace tollvane {

class ProcFs : public ProcessTable {
 public:
  // Tests hand in a tree of their own making.
  explicit ProcFs(std::filesystem::path root = "/proc");

  // Linux keeps no record of who is responsible for a process.
  std::optional<Pid> responsiblePid(Pid) const override { return std::nullopt; }
  std::optional<Pid> parentPid(Pid pid) const override;

  struct Status {
    Pid parent = 0;
    char state = '?';  // 'Z': it has ended, and its parent has not taken note yet
    // Clock ticks since boot. A pid together with its start time names one process for ever; a pid alone may be given
    // to another.
    std::uint64_t startTime = 0;
  };
  std::optional<Status> status(Pid pid) const;

  // The real path of the program, without the " (deleted)" of one that was replaced on disk.
  std::optional<std::string> executable(Pid pid) const;

  // Whether the process runs a program at all, even one that may not be known: a thread of the kernel's does not, and
  // neither does a process that has ended.
  bool hasProgram(Pid pid) const;

  std::vector<std::string> arguments(Pid pid) const;  // argv, argv[0] included
  std::string command(Pid pid) const;                 // the kernel's short name: at most 15 bytes
  std::optional<std::string> environment(Pid pid, std::string_view name) const;
  std::string cgroup(Pid pid) const;  // path in the unified hierarchy, "/user.slice/…"

  // What a person would call the program: the last component of argv[0] if that is only another name of the executable
  // (a link), of the script if an interpreter runs one, else of the executable; the kernel's short name if none of
  // these can be read. Empty if the process is gone.
  std::string programName(Pid pid) const;

  // The absolute path that one of the process's own arguments stands for: relative to its working directory, or, for a
  // bare name, found in its search path. Links are not followed. Absent if there is no such file.
  std::optional<std::string> fileNamed(Pid pid, std::string_view argument) const;

  // Whether `argument` is a name of the program at the real path `executable`, directly or through links.
  bool isNameOf(Pid pid, std::string_view argument, std::string_view executable) const;

  // All processes there are, in ascending order.
  std::vector<Pid> all() const;

  // Whether the process belongs to the user that runs this program.
  bool isOwn(Pid pid) const;

  const std::filesystem::path& root() const { return root_; }

 private:
  std::string path(Pid pid, std::string_view file) const;

  std::filesystem::path root_;
};

}  // namespace tollvane
