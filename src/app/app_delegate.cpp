#include "app/app_delegate.h"

#include <utility>

#include "menu/bell.h"
#include "support/fatal.h"
#include "support/json_value.h"

namespace tollvane {

AppDelegate::AppDelegate(const Platform& platform)
    : platform_(platform),
      prefs_(platform.defaults),
      paths_(platform.locations, platform.files),
      resolver_(platform.processes, platform.workspace, platform.locations, platform.files),
      history_(paths_, platform.files, platform.dates),
      recorder_(platform.mainQueue, platform.clock, resolver_, history_),
      watcher_(platform.mainQueue, platform.clock, platform.children, platform.bundle, resolver_) {
  recorder_.onChange = alive_.guard([this] { refreshIcon(); });
  recorder_.askWhichTabIsAudible = alive_.guard([this](Browser in) { link_.askWhichTabIsAudible(in); });
}

// The order matters: the bell shows at once, and sounds are heard before any browser is listened to.
void AppDelegate::applicationDidFinishLaunching() {
  statusItem_ = platform_.statusBar.makeStatusItem();
  refreshIcon();

  watcher_.onEvent = alive_.guard([this](std::shared_ptr<SoundEvent> event) { recorder_.record(std::move(event)); });
  watcher_.start();

  link_.settings = [prefs = prefs_] { return Message{{"markTabs", prefs.markTabs()}}; };
  link_.onTab = alive_.guard(
      [this](const BrowserConnection& from, const Message& report) { recorder_.tabReport(from.browser(), report); });
}

void AppDelegate::applicationWillTerminate() { watcher_.stop(); }

void AppDelegate::refreshIcon() {
  if (!statusItem_) fatal("there is no status item to show the bell in.");
  const Bell bell = bellFor(recorder_.events, platform_.dates);
  statusItem_->setImage(bell.symbolName, Bell::accessibilityDescription);
  statusItem_->setToolTip(bell.toolTip);
}

std::string AppDelegate::version() const {
  return platform_.bundle.infoString("CFBundleShortVersionString").value_or("dev");
}

}  // namespace tollvane
