// Makes the roles on macOS, and runs the event loop. Each file of this folder is named after the roles in it. To be
// called on the main thread. What a role is given here must outlive it.
#pragma once

#include <functional>
#include <memory>

#include "platform/platform.h"

namespace tollvane {

std::unique_ptr<MainQueue> makeMainQueue();
std::unique_ptr<Clock> makeClock();
std::unique_ptr<DateFormatter> makeDateFormatter();
std::unique_ptr<Defaults> makeDefaults();
std::unique_ptr<Locations> makeLocations();
std::unique_ptr<Bundle> makeBundle();
std::unique_ptr<ProcessTable> makeProcessTable();
std::unique_ptr<Workspace> makeWorkspace(MainQueue& queue);
std::unique_ptr<StatusBar> makeStatusBar();
std::unique_ptr<Application> makeApplication();
std::unique_ptr<Alerts> makeAlerts();
std::unique_ptr<Http> makeHttp();
std::unique_ptr<SafariServices> makeSafariServices();
std::unique_ptr<LoginService> makeLoginService();
std::unique_ptr<SettingsWindows> makeSettingsWindows();

// `onLogRefused` is called once, on the main thread, before the end of the log tool is reported, if macOS does not let
// this account read the system log. From then on the log tool is not started any more.
std::unique_ptr<ChildProcesses> makeChildProcesses(MainQueue& queue, const Bundle& bundle,
                                                   std::function<void()> onLogRefused);

struct ApplicationEvents {
  std::function<void()> didFinishLaunching;
  std::function<void()> shouldHandleReopen;  // the user has opened the application while it runs
  std::function<void()> willTerminate;       // also if the process is asked to end by a signal
};

// Runs an application without Dock icon and without a visible menu bar. Does not return: the process ends with the
// event loop.
void runApplication(const ApplicationEvents& events);

}  // namespace tollvane
