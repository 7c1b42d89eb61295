// The processes of a Linux system. Linux keeps no record of who is responsible for a process: who wants to know walks
// up the parents. Main thread only.
#pragma once

#include "platform/linux/apps/proc_fs.h"
#include "platform/process_table.h"

namespace tollvane {

class LinuxProcessTable : public ProcessTable {
 public:
  explicit LinuxProcessTable(const ProcFs& processes) : processes_(processes) {}

  std::optional<Pid> responsiblePid(Pid) const override { return std::nullopt; }
  std::optional<Pid> parentPid(Pid pid) const override;

 private:
  const ProcFs& processes_;
};

}  // namespace tollvane
