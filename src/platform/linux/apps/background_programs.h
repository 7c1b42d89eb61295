// The names of processes that belong to no application: agents that start with the session, services of the bus, and
// programs in service units. Such a name never makes a process an ordinary application.
//
//   BackgroundPrograms background(entries);
//   background.nameOf(program, "/…/backup.service", false);  // "Evolution Alarm Notify", "Backup (backup.service)", ""
//
// Reads files only, and sends no message over the bus. Keeps only what the files say, as long as they stay the same.
// One thread at a time; the constructor's argument must outlive the object. Sources: freedesktop.org, Desktop
// Application Autostart 0.5; the D-Bus specification, "Message Bus Starting Services" (Name, Exec, SystemdService);
// systemd.unit(5) (Description, names and folders of units).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/apps/desktop_entries.h"
#include "platform/linux/apps/running_program.h"

namespace tollvane {

class BackgroundPrograms {
 public:
  explicit BackgroundPrograms(const DesktopEntries& applications);

  // In this order: the name of the autostart entry that starts the process; what its D-Bus service file leads to, which
  // is an application with the bus name as its id, a unit, or the bus name itself; the description of the unit that it
  // runs in. Empty if none exists. A process that has a window is more than its unit, so `hasWindow` leaves that out.
  std::string nameOf(RunningProgram& program, std::string_view cgroup, bool hasWindow) const;

 private:
  std::string autostartName(RunningProgram& program) const;
  std::string busServiceName(RunningProgram& program) const;
  std::string unitName(std::string_view cgroup) const;
  std::string described(const std::string& unit, bool ofUser) const;

  const DesktopEntries& applications_;
  mutable DesktopEntries autostart_;
  mutable DesktopEntries busServices_;
  mutable Executables autostartPrograms_{autostart_};
  mutable Executables busPrograms_{busServices_};
};

}  // namespace tollvane
