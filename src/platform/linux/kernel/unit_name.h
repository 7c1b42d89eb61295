// What the unit that a process runs in says about the application it was started for.
// Sources: systemd.io, Desktop Environment Integration (app[-launcher]-ID-RANDOM.scope and its kin); systemd-escape(1);
// the names that Flatpak and snapd give to their scopes. Pure functions; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tollvane {

struct UnitName {
  // Ids that may be meant, the most likely one first: where a launcher's name ends and the id begins cannot be told
  // from the name alone. Whichever is installed is it.
  std::vector<std::string> desktopIds;
  std::string flatpakId;     // certain, even where no entry has it
  std::string snapInstance;  // likewise, with the name of the application within the snap
  std::string snapApplication;
  // The unit is of this application's own making and of nothing that it starts, so that the process is the application
  // whatever its program is called.
  bool isOwnService = false;
};

// `cgroup` is a path such as "/user.slice/user-1000.slice/user@1000.service/app.slice/app-example-42.scope". The
// innermost unit that names an application counts. All empty when none does.
UnitName applicationUnit(std::string_view cgroup);

}  // namespace tollvane
