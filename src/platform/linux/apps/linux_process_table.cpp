#include "platform/linux/apps/linux_process_table.h"

namespace tollvane {

std::optional<Pid> LinuxProcessTable::parentPid(Pid pid) const {
  const auto status = processes_.status(pid);
  if (!status) return std::nullopt;
  return status->parent;
}

}  // namespace tollvane
