// What the name of a process's unit says about the application for which it was started. Sources: systemd.io, Desktop
// Environment Integration (app[-launcher]-ID-RANDOM.scope and similar); systemd-escape(1); the names that Flatpak and
// snapd give to their scopes. Pure functions; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tollvane {

struct UnitName {
  // Ids that may be meant, the most likely one first: the name alone does not tell where a launcher's name ends and the
  // id begins. The first id that is installed is meant.
  std::vector<std::string> desktopIds;
  std::string flatpakId;     // certain, even if no entry has it
  std::string snapInstance;  // certain, too, with the name of the application within the snap
  std::string snapApplication;
  // Whether the application made this unit for itself and not for what it starts. Then the process is the application,
  // whatever its program is called.
  bool isOwnService = false;
};

// `cgroup`: a path such as "/user.slice/user-1000.slice/user@1000.service/app.slice/app-example-42.scope". The
// innermost unit that names an application counts. Everything is empty if none does.
UnitName applicationUnit(std::string_view cgroup);

}  // namespace tollvane
