// The platform's roles on macOS. To be made on the main thread; must outlive the AppDelegate.
#pragma once

#include <memory>

#include "platform/platform.h"
#include "platform/posix/posix_files.h"

namespace tollvane {

class MacPlatform {
 public:
  MacPlatform();
  Platform roles();

 private:
  void logIsRefused();

  Wording wording_;
  PosixFiles files_;
  std::unique_ptr<MainQueue> queue_;
  std::unique_ptr<Clock> clock_;
  std::unique_ptr<DateFormatter> dates_;
  std::unique_ptr<Defaults> defaults_;
  std::unique_ptr<Locations> locations_;
  std::unique_ptr<Bundle> bundle_;
  std::unique_ptr<ChildProcesses> children_;
  std::unique_ptr<ProcessTable> processes_;
  std::unique_ptr<Workspace> workspace_;
  std::unique_ptr<StatusBar> statusBar_;
  std::unique_ptr<Application> application_;
  std::unique_ptr<Alerts> alerts_;
  std::unique_ptr<Http> http_;
  std::unique_ptr<SafariServices> safari_;
  std::unique_ptr<LoginService> login_;
  std::unique_ptr<SettingsWindows> settingsWindows_;
};

}  // namespace tollvane
