// The controller: owns everything that lives as long as the process, and connects it.
//
//   AppDelegate delegate(platform);
//   delegate.applicationDidFinishLaunching();   // once, when the event loop is about to run
//   ...
//   delegate.applicationWillTerminate();        // once, before the process ends
//
// Main thread only. The platform outlives it.
#pragma once

#include <memory>
#include <string>

#include "app/history.h"
#include "app/recorder.h"
#include "browser/browser_link.h"
#include "detect/resolver.h"
#include "detect/watcher.h"
#include "model/paths.h"
#include "model/prefs.h"
#include "platform/platform.h"
#include "support/liveness.h"

namespace tollvane {

class AppDelegate {
 public:
  explicit AppDelegate(const Platform& platform);

  void applicationDidFinishLaunching();
  void applicationWillTerminate();

  // Brings the bell's image and tooltip up to date with the recent sounds. There must be a bell: it is made first
  // thing at launch.
  void refreshIcon();

  // Of the running program; "dev" when its bundle does not say.
  std::string version() const;

  Recorder& recorder() { return recorder_; }
  BrowserLink& link() { return link_; }

 private:
  Platform platform_;
  Prefs prefs_;
  Paths paths_;
  Resolver resolver_;
  History history_;
  Recorder recorder_;
  Watcher watcher_;
  BrowserLink link_;
  std::unique_ptr<StatusItem> statusItem_;
  Liveness alive_;
};

}  // namespace tollvane
