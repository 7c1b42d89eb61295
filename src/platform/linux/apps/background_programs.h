// What a process is called that belongs to no application: an agent that starts with the session, a service of the bus,
// whatever runs in a service unit. Such a name never makes an ordinary application of a process.
//
//   BackgroundPrograms background(entries);
//   background.nameOf(program, "/…/backup.service", false);  // "Evolution Alarm Notify", "Backup (backup.service)", or
//   empty
//
// Reads files only, and asks nobody over the bus. Nothing is kept but what the files say, as long as they stay the
// same. One thread at a time; the constructor's argument must outlive the object. Sources: freedesktop.org, Desktop
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
  // runs in. Empty if there is none. A process that has a window is more than its unit, so `hasWindow` leaves that out.
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
