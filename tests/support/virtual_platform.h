// A whole system in memory, moved by hand: the third implementation of the platform beside the real ones.
//
//   VirtualPlatform system;
//   AppDelegate delegate(system.platform());
//   system.workspace.addRunning(4242, "Mail");
//   system.children.last().print(...);
//   system.queue.advance(4s);              // runs what falls due, in order, at its exact time
#pragma once

#include "platform/platform.h"
#include "support/virtual_desktop.h"
#include "support/virtual_disk.h"
#include "support/virtual_programs.h"
#include "support/virtual_time.h"

namespace tollvane::test {

using namespace std::chrono_literals;

struct VirtualPlatform {
  VirtualClock clock;
  VirtualMainQueue queue{clock};
  VirtualDates dates;
  VirtualDefaults defaults;
  VirtualLocations locations;
  VirtualFiles files;
  VirtualBundle bundle;
  VirtualChildren children;
  VirtualProcessTable processes;
  VirtualWorkspace workspace;
  VirtualStatusBar statusBar;
  VirtualApplication application;
  VirtualHttp http;
  VirtualSafari safari;
  VirtualLogin login;
  VirtualSettingsWindows settingsWindows;

  Platform platform() {
    return {queue,     clock,     dates,       defaults,    locations, files,  bundle, children,        processes,
            workspace, statusBar, application, application, http,      safari, login,  settingsWindows, macWording};
  }
};

}  // namespace tollvane::test
