// Browsers that no package installed (unpacked into /opt or a home folder): they are known by their program alone, as
// the table in catalogue/browsers.h has it, with a desktop entry of the user's own or with none. Main thread only. The
// constructor's arguments must outlive the object.
#pragma once

#include <cstdint>
#include <vector>

#include "catalogue/browsers.h"
#include "platform/clock.h"
#include "platform/linux/apps/applications.h"

namespace tollvane {

class BrowserPrograms {
 public:
  // Searches less than 100 ms apart share one scan of /proc; a process started in between is missed.
  BrowserPrograms(const Applications& applications, const Clock& clock) : applications_(applications), clock_(clock) {}

  // The edition whose program the process runs; null if it is no browser's, another user's, or gone.
  const BrowserEdition* editionOf(Pid pid) const;
  const BrowserEdition* editionOf(RunningProgram& program) const;

  // The user's processes that run this edition's program, in ascending order.
  std::vector<Pid> running(const BrowserEdition& edition) const;

  // The entries that start this edition's program, whatever their ids are, without those that start a single web
  // application in it. Not up to date before entries().refresh().
  std::vector<DesktopEntries::Entry> entries(const BrowserEdition& edition) const;

 private:
  struct Running {
    Pid pid = 0;
    const BrowserEdition* edition = nullptr;
  };
  struct Started {
    DesktopEntries::Entry entry;
    const BrowserEdition* edition = nullptr;
  };

  const std::vector<Running>& look() const;

  const Applications& applications_;
  const Clock& clock_;
  mutable std::vector<Running> running_;
  mutable Instant runningUntil_ = Instant::min();
  mutable std::vector<Started> started_;
  mutable std::uint64_t generation_ = 0;  // of the entries in `started_`
};

}  // namespace tollvane
