// Who started whom. Main thread only; every answer is of this moment.
#pragma once

#include <cstdint>
#include <optional>

namespace tollvane {

using Pid = std::int32_t;

class ProcessTable {
 public:
  virtual ~ProcessTable() = default;

  // The process that the system holds responsible for `pid`, where the system keeps such a record. May be the process
  // itself. Absent when the system keeps none or knows no process.
  virtual std::optional<Pid> responsiblePid(Pid pid) const = 0;

  // The parent of `pid`; absent when there is no such process. The first process has parent 0.
  virtual std::optional<Pid> parentPid(Pid pid) const = 0;
};

}  // namespace tollvane
