// Finds running processes of this machine, so that a test can examine what it has started.
#pragma once

#include <vector>

#include "platform/linux/kernel/proc_fs.h"

namespace tollvane::test {

inline std::vector<Pid> childrenOf(Pid parent) {
  const ProcFs processes;
  std::vector<Pid> children;
  for (const Pid pid : processes.all())
    if (const auto status = processes.status(pid); status && status->parent == parent) children.push_back(pid);
  return children;
}

inline bool isAlive(Pid pid) { return ProcFs().executable(pid).has_value(); }

}  // namespace tollvane::test
