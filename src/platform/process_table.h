// Which process started which. Main thread only; every answer is about this moment.
#pragma once

#include <cstdint>
#include <optional>

namespace tollvane {

using Pid = std::int32_t;

class ProcessTable {
 public:
  virtual ~ProcessTable() = default;

  // The process that the system holds responsible for `pid`, perhaps `pid` itself. Absent if the system keeps no such
  // record or does not know the process.
  virtual std::optional<Pid> responsiblePid(Pid pid) const = 0;

  // The parent of `pid`; absent if there is no such process. The first process has parent 0.
  virtual std::optional<Pid> parentPid(Pid pid) const = 0;
};

}  // namespace tollvane
