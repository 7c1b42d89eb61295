// The program that shows notifications on this desktop, as the owner of org.freedesktop.Notifications on the session
// bus: is it the one who plays? Main thread only.
// Sources: freedesktop.org, Desktop Notifications; systemd.unit(5) for the names of units.
#pragma once

#include <optional>
#include <string>

#include "soundlog/makers/maker.h"

namespace tollvane::soundlog {

class NotificationService {
 public:
  NotificationService(const ProcFs& processes, const Makers& makers) : processes_(processes), makers_(makers) {}

  // Absent: nobody shows notifications now.
  void setOwner(std::optional<Pid> pid);

  // The sound comes from the service: the process itself, another one of its unit, or a script it runs.
  bool plays(const Maker& maker) const;

 private:
  const ProcFs& processes_;
  const Makers& makers_;
  std::optional<ProcessKey> owner_;
  std::string unit_;  // the control group that is the service's own; empty when it has none
};

}  // namespace tollvane::soundlog
