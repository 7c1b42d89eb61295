// The processes of applications: of all applications, or of certain ones. One thread at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/linux/apps/applications.h"

namespace tollvane {

// A process, and the application that it belongs to.
struct ApplicationProcess {
  Pid pid = 0;
  std::uint64_t startTime = 0;  // as ProcFs gives it
  Ownership application;
};

class ApplicationProcesses {
 public:
  // Searches less than 100 ms apart share one scan of /proc; a process started in between is missed. Both arguments
  // must outlive this object.
  ApplicationProcesses(const Applications& applications, const Clock& clock)
      : applications_(applications), clock_(clock) {}

  using Owner = std::function<std::optional<Ownership>(RunningProgram& program)>;

  // All of the user's processes for which `owner` finds one, in ascending order. `owner` may take the desktop entries
  // as they are.
  std::vector<ApplicationProcess> all(const Owner& owner) const;

  // The user's processes that belong to one of these entries, in ascending order. `knownPrograms`: the caller promises
  // that each entry names a real executable, not a script. If none of those runs, the other processes are not examined.
  std::vector<ApplicationProcess> of(const ProgramIndex::Entries& wanted, bool knownPrograms) const;

 private:
  struct Search;

  // What is read about every process. Most processes need no closer look.
  struct Seen {
    Pid pid = 0;
    std::optional<std::string> executable;
  };

  std::optional<ApplicationProcess> process(Pid pid, const Owner& owner) const;
  const std::vector<Seen>& everybody() const;
  bool mayBelong(const Seen& process, const Search& search) const;

  const Applications& applications_;
  const Clock& clock_;
  mutable std::vector<Seen> everybody_;
  mutable Instant everybodyUntil_ = Instant::min();
};

}  // namespace tollvane
