// The controller: owns all objects that live as long as the process, and connects them.
//
//   AppDelegate delegate(platform);
//   delegate.applicationDidFinishLaunching();   // once, when the event loop is about to run
//   ...
//   delegate.applicationWillTerminate();        // once, before the process ends
//
// Main thread only. What `platform` refers to must outlive it.
#pragma once

#include <memory>
#include <string>

#include "app/history.h"
#include "app/recorder.h"
#include "browser/browser_link.h"
#include "detect/resolver.h"
#include "detect/watcher.h"
#include "menu/sound_menu.h"
#include "menu/source_opener.h"
#include "model/paths.h"
#include "model/prefs.h"
#include "platform/platform.h"
#include "settings/login_item.h"
#include "settings/settings_model.h"
#include "support/liveness.h"
#include "update/updater.h"

namespace tollvane {

class AppDelegate : public MenuDelegate {
 public:
  explicit AppDelegate(const Platform& platform);

  void applicationDidFinishLaunching();
  void applicationWillTerminate();

  // To be called if the user opens the program while it runs: shows the settings. Always true.
  bool applicationShouldHandleReopen(bool hasVisibleWindows);

  // Makes the window at the first call and shows the same one at every other: `welcome` counts only at the first.
  void showSettings(bool welcome);

  // Makes the sound menu anew.
  void menuNeedsUpdate(Menu& menu) override;

  // What the menu's items do. A sender whose `representedObject` has the wrong type is ignored.
  void openSource(const MenuItem& sender);
  void openExtensionStore(const MenuItem& sender);
  void markAllSeen();
  void openHistory();
  void clearList();
  void openUpdate();
  void checkUpdates();
  void openSettings();
  void quit();

  // Sets the bell's image and tooltip from the recent sounds. The bell must exist: applicationDidFinishLaunching()
  // makes it first.
  void refreshIcon();

  // The running program's version; "dev" if its bundle does not say.
  std::string version() const;

  // What the doctor wants to know of the Tollvane that runs: see state_report.h.
  std::string state() const;

  Recorder& recorder() { return recorder_; }
  BrowserLink& link() { return link_; }
  Updater& updater() { return updater_; }
  SettingsModel& settingsModel() { return settingsModel_; }

 private:
  void wireLink();
  void refreshSettingsSoon();
  void wireSettings();
  void handleFirstLaunch();
  void checkForUpdatesHourly();
  void makeSettingsWindow(bool welcome);
  void showExtensionFiles();
  SoundMenuActions menuActions();
  void tellOfUpdates();

  Platform platform_;
  Prefs prefs_;
  Paths paths_;
  Resolver resolver_;
  History history_;
  Recorder recorder_;
  Watcher watcher_;
  BrowserLink link_;
  Updater updater_;
  SourceOpener sourceOpener_;
  LoginItem loginItem_;
  SettingsModel settingsModel_;
  std::unique_ptr<StatusItem> statusItem_;
  std::unique_ptr<SettingsWindow> settingsWindow_;
  bool refreshIsDue_ = false;
  bool updateAnswerIsDue_ = false;
  Liveness alive_;
};

}  // namespace tollvane
