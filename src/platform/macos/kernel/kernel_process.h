// What the kernel says about processes, asked anew at each call. Uses no framework, because the bridge needs it too.
// Any thread. Source: sysctl(3), kinfo_proc.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/process_table.h"

namespace tollvane {

struct KernelProcess {
  Pid parent = 0;
  std::uint64_t startTime = 0;  // microseconds since 1970; with the pid it names one process for good
};

// Absent if there is no such process.
std::optional<KernelProcess> kernelProcess(Pid pid);

// The path of the program that runs in this process; empty if the kernel does not say.
std::string programPath(Pid pid);

}  // namespace tollvane
