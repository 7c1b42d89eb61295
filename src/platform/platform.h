// Everything that the core needs from the system it runs on. The creator of a Platform owns the roles and keeps them
// alive longer than the AppDelegate that receives them. platform/linux makes one for people, the virtual platform
// (tests/support) makes one for the tests.
#pragma once

#include "platform/application.h"
#include "platform/bundle.h"
#include "platform/child_processes.h"
#include "platform/clock.h"
#include "platform/defaults.h"
#include "platform/files.h"
#include "platform/http.h"
#include "platform/locations.h"
#include "platform/login_service.h"
#include "platform/main_queue.h"
#include "platform/process_table.h"
#include "platform/safari_services.h"
#include "platform/settings_window.h"
#include "platform/status_item.h"
#include "platform/wording.h"
#include "platform/workspace.h"

namespace tollvane {

struct Platform {
  MainQueue& mainQueue;
  Clock& clock;
  DateFormatter& dates;
  Defaults& defaults;
  Locations& locations;
  Files& files;
  Bundle& bundle;
  ChildProcesses& children;
  ProcessTable& processes;
  Workspace& workspace;
  StatusBar& statusBar;
  Application& application;
  Alerts& alerts;
  Http& http;
  SafariServices& safari;
  LoginService& login;
  SettingsWindows& settingsWindows;
  const Wording& wording;
};

}  // namespace tollvane
