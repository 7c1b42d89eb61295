// Everything that the core asks of the system, as a Linux desktop answers it. Make one on the main thread, after the
// application object; it outlives the AppDelegate.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "platform/linux/apps/applications.h"
#include "platform/linux/apps/linux_process_table.h"
#include "platform/linux/desktop/activator.h"
#include "platform/linux/desktop/bus_activation.h"
#include "platform/linux/desktop/desktop_status_bar.h"
#include "platform/linux/desktop/gio_launcher.h"
#include "platform/linux/desktop/linux_application.h"
#include "platform/linux/desktop/linux_workspace.h"
#include "platform/linux/desktop/qt_alerts.h"
#include "platform/linux/desktop/sway_ipc.h"
#include "platform/linux/desktop/x11_raiser.h"
#include "platform/linux/settings/qt_settings_windows.h"
#include "platform/linux/status/appearance.h"
#include "platform/linux/status/linux_status_bar.h"
#include "platform/linux/system/autostart_login.h"
#include "platform/linux/system/executable_bundle.h"
#include "platform/linux/system/icu_date_formatter.h"
#include "platform/linux/system/json_defaults.h"
#include "platform/linux/system/no_safari.h"
#include "platform/linux/system/posix_files.h"
#include "platform/linux/system/qt_child_processes.h"
#include "platform/linux/system/qt_http.h"
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

  // The user's permission to come forward that the program was started with, or asked to come forward with.
  void setToken(std::string token) { token_ = std::move(token); }

  // When nothing shows status items: tells so in an alert, unless this is set to something better or to nothing.
  std::function<void()>& onNoStatusBar() { return bar_.onNoStatusBar; }

 private:
  std::string takeToken();

  Appearance appearance_;
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
  LinuxStatusBar statusBar_;
  DesktopStatusBar bar_;
  std::string token_;
  const TokenSource tokens_ = [this] { return takeToken(); };
  GioLauncher launcher_;
  SwayIpc sway_;
  X11Raiser x11_;
  BusActivation busActivation_;
  Activator activator_;
  LinuxWorkspace workspace_;
  LinuxApplication application_;
  QtAlerts alerts_;
  QtHttp http_;
  NoSafari safari_;
  AutostartLogin login_;
  QtSettingsWindows settingsWindows_;
};

}  // namespace tollvane
