// A whole system in memory, controlled by the test: an implementation of the platform beside the real ones.
//
//   VirtualPlatform system;
//   AppDelegate delegate(system.platform());
//   system.workspace.addRunning(4242, "Mail");
//   system.children.last().print(...);
//   system.queue.advance(4s);              // runs what falls due, in order, at its exact time
#pragma once

#include "platform/macos/macos_wording.h"
#include "platform/platform.h"
#include "tests/virtual/virtual_desktop.h"
#include "tests/virtual/virtual_disk.h"
#include "tests/virtual/virtual_programs.h"
#include "tests/virtual/virtual_time.h"

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

  // From now on, all of these write what they are asked for into `journal`.
  void writeDown(Journal& journal) {
    queue.journal = children.journal = statusBar.journal = http.journal = safari.journal = login.journal =
        settingsWindows.journal = &journal;
  }

  Platform platform() {
    return {
        .mainQueue = queue,
        .clock = clock,
        .dates = dates,
        .defaults = defaults,
        .locations = locations,
        .files = files,
        .bundle = bundle,
        .children = children,
        .processes = processes,
        .workspace = workspace,
        .statusBar = statusBar,
        .application = application,
        .alerts = application,
        .http = http,
        .safari = safari,
        .login = login,
        .settingsWindows = settingsWindows,
        .wording = macWording,
    };
  }
};

}  // namespace tollvane::test
