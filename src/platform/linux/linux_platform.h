// Everything that the core asks of the system, as a Linux desktop answers it. Make one on the main thread, after the
// application object; it outlives the AppDelegate.
#pragma once

#include <filesystem>

#include "platform/linux/apps/applications.h"
#include "platform/linux/apps/linux_process_table.h"
#include "platform/linux/apps/linux_workspace.h"
#include "platform/linux/status/linux_status_bar.h"
#include "platform/linux/system/executable_bundle.h"
#include "platform/linux/system/icu_date_formatter.h"
#include "platform/linux/system/json_defaults.h"
#include "platform/linux/system/posix_files.h"
#include "platform/linux/system/qt_child_processes.h"
#include "platform/linux/system/qt_main_queue.h"
#include "platform/linux/system/system_clock.h"
#include "platform/linux/system/xdg_locations.h"
#include "platform/platform.h"

namespace tollvane {

class LinuxPlatform {
 public:
  // `bundle`: the directory that the program stands in.
  explicit LinuxPlatform(const std::filesystem::path& bundle);

  Platform roles();

 private:
  QtMainQueue queue_;
  SystemClock clock_;
  IcuDateFormatter dates_;
  PosixFiles files_;
  JsonDefaults defaults_;
  XdgLocations locations_;
  ExecutableBundle bundle_;
  QtChildProcesses children_;
  ProcFs procFs_;
  DesktopEntries entries_;
  XcbWindows windows_;
  Applications applications_;
  LinuxProcessTable processes_;
  LinuxWorkspace workspace_;
  LinuxStatusBar statusBar_;
};

}  // namespace tollvane
