// The platform's roles on macOS. To be made on the main thread; must outlive the AppDelegate.
#pragma once

#include <memory>

#include "platform/macos/macos_wording.h"
#include "platform/macos/roles.h"
#include "platform/posix/posix_files.h"

namespace tollvane {

class MacPlatform {
 public:
  Platform roles();

 private:
  void logIsRefused();

  Wording wording_ = macWording;
  PosixFiles files_;
  std::unique_ptr<MainQueue> queue_ = makeMainQueue();
  std::unique_ptr<Clock> clock_ = makeClock();
  std::unique_ptr<DateFormatter> dates_ = makeDateFormatter();
  std::unique_ptr<Defaults> defaults_ = makeDefaults();
  std::unique_ptr<Locations> locations_ = makeLocations();
  std::unique_ptr<Bundle> bundle_ = makeBundle();
  std::unique_ptr<ChildProcesses> children_ = makeChildProcesses(*queue_, *bundle_, [this] { logIsRefused(); });
  std::unique_ptr<ProcessTable> processes_ = makeProcessTable();
  std::unique_ptr<Workspace> workspace_ = makeWorkspace(*queue_);
  std::unique_ptr<StatusBar> statusBar_ = makeStatusBar();
  std::unique_ptr<Application> application_ = makeApplication();
  std::unique_ptr<Alerts> alerts_ = makeAlerts();
  std::unique_ptr<Http> http_ = makeHttp();
  std::unique_ptr<SafariServices> safari_ = makeSafariServices();
  std::unique_ptr<LoginService> login_ = makeLoginService();
  std::unique_ptr<SettingsWindows> settingsWindows_ = makeSettingsWindows();
};

}  // namespace tollvane
