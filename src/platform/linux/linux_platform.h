// The platform's roles on a Linux desktop. To be made on the main thread, after the application object; must outlive
// the AppDelegate.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/apps/applications.h"
#include "platform/linux/bell/desktop_status_bar.h"
#include "platform/linux/bell/linux_status_bar.h"
#include "platform/linux/bell/shell_extension.h"
#include "platform/linux/drawing/appearance.h"
#include "platform/linux/kernel/folders.h"
#include "platform/linux/session/autostart_login.h"
#include "platform/linux/session/launcher_entry.h"
#include "platform/linux/system/clock_and_dates.h"
#include "platform/linux/system/executable_bundle.h"
#include "platform/linux/system/json_defaults.h"
#include "platform/linux/system/lazy_http.h"
#include "platform/linux/system/qt_child_processes.h"
#include "platform/linux/system/qt_main_queue.h"
#include "platform/linux/windows/linux_application.h"
#include "platform/linux/windows/qt_alerts.h"
#include "platform/linux/windows/settings_window.h"
#include "platform/linux/workspace/bus_activation.h"
#include "platform/linux/workspace/kwin_scripting.h"
#include "platform/linux/workspace/launcher.h"
#include "platform/linux/workspace/linux_workspace.h"
#include "platform/linux/workspace/shell_windows.h"
#include "platform/linux/workspace/sway_ipc.h"
#include "platform/linux/workspace/wayland_toplevels.h"
#include "platform/linux/workspace/window_raiser.h"
#include "platform/linux/workspace/x11_raiser.h"
#include "platform/platform.h"
#include "platform/posix/posix_files.h"

namespace tollvane {

class LinuxPlatform {
 public:
  // `bundle`: the directory that contains the program.
  explicit LinuxPlatform(const std::filesystem::path& bundle);

  Platform roles();

  // Sets the activation token, the user's permission to come forward, that came with the start or with a request to
  // reopen.
  void setToken(std::string token) { token_ = std::move(token); }

  // Shows the bell's menu without a click; false if this desktop lets no program do that.
  bool showMenu() { return bar_.showMenu(); }

  // Called if nothing shows status items. It shows an alert, unless it is set to another function or to nothing.
  std::function<void()>& onNoStatusBar() { return bar_.onNoStatusBar; }

 private:
  std::string takeToken();
  void offerShellExtension();

  Appearance appearance_;
  QtMainQueue queue_;
  SystemClock clock_;
  IcuDateFormatter dates_;
  PosixFiles files_;
  JsonDefaults defaults_;
  XdgLocations locations_;
  ExecutableBundle bundle_;
  QtChildProcesses children_;
  ProcFs processes_;
  DesktopEntries entries_;
  XcbWindows windows_;
  BackgroundPrograms background_;
  Applications applications_;
  LinuxStatusBar statusBar_;
  DesktopStatusBar bar_;
  ShellExtension shellExtension_;
  std::string token_;
  const TokenSource tokens_ = [this] { return takeToken(); };
  GioLauncher launcher_;
  SwayIpc sway_;
  KWinScripting kwin_;
  ShellWindows gnome_;
  WaylandToplevels wayland_;
  X11Raiser x11_;
  BusActivation busActivation_;
  Activator activator_;
  LinuxWorkspace workspace_;
  LinuxApplication application_;
  QtAlerts alerts_;
  LazyHttp http_;
  std::unique_ptr<SafariServices> safari_;
  AutostartLogin login_;
  QtSettingsWindows settingsWindows_;
};

}  // namespace tollvane
