#include "platform/macos/kernel/kernel_process.h"

#include <libproc.h>
#include <sys/sysctl.h>

#include <array>

namespace tollvane {

std::optional<KernelProcess> kernelProcess(Pid pid) {
  std::array<int, 4> name = {CTL_KERN, KERN_PROC, KERN_PROC_PID, pid};
  kinfo_proc record{};
  std::size_t size = sizeof record;
  const bool succeeds = ::sysctl(name.data(), name.size(), &record, &size, nullptr, 0) == 0;
  if (!succeeds || size == 0) return std::nullopt;  // without data: there is no such process
  const timeval& start = record.kp_proc.p_starttime;
  return KernelProcess{
      .parent = record.kp_eproc.e_ppid,
      .startTime = static_cast<std::uint64_t>(start.tv_sec) * 1'000'000 + static_cast<std::uint64_t>(start.tv_usec)};
}

std::string programPath(Pid pid) {
  std::array<char, PROC_PIDPATHINFO_MAXSIZE> path{};
  const int size = ::proc_pidpath(pid, path.data(), path.size());
  return size > 0 ? std::string(path.data(), static_cast<std::size_t>(size)) : std::string();
}

}  // namespace tollvane
