#include "app/app_delegate.h"

#include <utility>

#include "app/browser_status.h"
#include "app/state_report.h"
#include "menu/bell.h"
#include "settings/extension_pick.h"
#include "settings/settings_view.h"
#include "support/fatal.h"
#include "support/json_value.h"

namespace tollvane {
namespace {

constexpr std::chrono::hours updateCheckInterval{1};
constexpr std::chrono::milliseconds refreshDelay{100};

}  // namespace

AppDelegate::AppDelegate(const Platform& platform)
    : platform_(platform),
      prefs_(platform.defaults),
      paths_(platform.locations, platform.files),
      resolver_(platform.processes, platform.workspace, platform.locations, platform.files),
      history_(paths_, platform.files, platform.dates),
      recorder_(platform.mainQueue, platform.clock, resolver_, history_),
      watcher_(platform.mainQueue, platform.clock, platform.children, platform.bundle, resolver_),
      link_(platform.mainQueue, platform.safari, platform.files, platform.locations, platform.bundle,
            platform.workspace, paths_),
      updater_(platform.http, platform.clock, prefs_, platform.bundle),
      sourceOpener_(platform.workspace, platform.application, platform.alerts, platform.wording, resolver_, link_),
      loginItem_(platform.login, platform.files, platform.locations),
      settingsModel_(platform.workspace, platform.bundle, platform.mainQueue, platform.wording, prefs_, loginItem_) {
  recorder_.onChange = alive_.guard([this] { refreshIcon(); });
  recorder_.askWhichTabIsAudible = alive_.guard([this](Browser in, AudibleQuestions::Completion completion) {
    link_.askWhichTabIsAudible(in, std::move(completion));
  });
}

// The order matters: the bell shows at once, and sounds are heard before browsers may report.
void AppDelegate::applicationDidFinishLaunching() {
  statusItem_ = platform_.statusBar.makeStatusItem();
  refreshIcon();
  statusItem_->setMenu(*this);

  watcher_.onEvent = alive_.guard([this](std::shared_ptr<SoundEvent> event) { recorder_.record(std::move(event)); });
  watcher_.onHearingChange = alive_.guard([this] { refreshIcon(); });
  watcher_.start();

  wireLink();
  wireSettings();
  loginItem_.migrateFromLegacyAgent();
  handleFirstLaunch();
  checkForUpdatesHourly();
}

void AppDelegate::wireLink() {
  link_.settings = [prefs = prefs_] { return Message{{"markTabs", prefs.markTabs()}}; };
  link_.onTab = alive_.guard([this](BrowserConnection& from, const Message& report) {
    from.lastReport = platform_.clock.now();
    recorder_.tabReport(from.browser(), report, from.bundleID.value_or(""));
  });
  link_.onChange = alive_.guard([this] { refreshSettingsSoon(); });
  link_.start();
  link_.refreshSafariState(alive_.guard([this] {
    link_.broadcastSettings();
    settingsModel_.refresh();
  }));
}

// One refresh for many changes: it asks the desktop about every browser.
void AppDelegate::refreshSettingsSoon() {
  if (std::exchange(refreshIsDue_, true)) return;
  platform_.mainQueue.after(refreshDelay, alive_.guard([this] {
    refreshIsDue_ = false;
    settingsModel_.refresh();
  }));
}

void AppDelegate::wireSettings() {
  settingsModel_.onMarkTabsChanged = alive_.guard([this] { link_.broadcastSettings(); });
  settingsModel_.browserStatus = [this] { return browserRows(link_, platform_.workspace); };
  settingsModel_.isConnected = [this](Browser browser) { return link_.isConnected(browser); };
}

void AppDelegate::handleFirstLaunch() {
  if (prefs_.hasLaunchedBefore()) return;
  prefs_.setHasLaunchedBefore(true);
  if (!loginItem_.isEnabled()) loginItem_.set(true);  // the settings window shows a refusal
  showSettings(true);
}

void AppDelegate::checkForUpdatesHourly() {
  updater_.checkIfDue();
  platform_.mainQueue.after(updateCheckInterval, alive_.guard([this] { checkForUpdatesHourly(); }));
}

void AppDelegate::applicationWillTerminate() {
  watcher_.stop();
  link_.stop();
  recorder_.finish();
}

bool AppDelegate::applicationShouldHandleReopen(bool) {
  showSettings(false);
  return true;
}

void AppDelegate::showSettings(bool welcome) {
  if (!settingsWindow_) makeSettingsWindow(welcome);
  settingsModel_.refresh();
  link_.refreshSafariState(alive_.guard([this] { settingsModel_.refresh(); }));
  platform_.application.activateIgnoringOtherApps();
  settingsWindow_->makeKeyAndOrderFront();
}

void AppDelegate::makeSettingsWindow(bool welcome) {
  settingsWindow_ = platform_.settingsWindows.make({.title = welcome ? "Welcome" : "Tollvane Settings"});
  const SettingsView view{settingsModel_, welcome, version(), alive_.guard([this] { showExtensionFiles(); })};
  const auto draw = [this, view] { settingsWindow_->setContent(view.body(platform_.wording)); };
  draw();
  // Several changes in a row are drawn once, after all of them have taken effect.
  settingsModel_.objectWillChange = alive_.guard([this, draw, isDue = std::make_shared<bool>(false)] {
    if (std::exchange(*isDue, true)) return;
    platform_.mainQueue.post(alive_.guard([draw, isDue] {
      *isDue = false;
      draw();
    }));
  });
}

void AppDelegate::showExtensionFiles() {
  auto files = platform_.bundle.resource("Extensions");
  const auto home = platform_.locations.home();
  if (!files && home) files = *home / "Developer/Tollvane/Extension/dist";
  if (files) platform_.workspace.open(*files, [](bool) {});
}

void AppDelegate::menuNeedsUpdate(Menu& menu) {
  const auto release = updater_.available();
  BrowserNames names(resolver_);
  menu = soundMenu({
                       .events = recorder_.events,
                       .suggestExtension = prefs_.suggestExtension(),
                       .hasStores = hasSite(platform_.bundle),
                       .browser = [&names](const SoundEvent& event) { return names.browser(event.app); },
                       .isConnected = [this](Browser browser) { return link_.isConnected(browser); },
                       .availableVersion = release ? std::optional(release->version) : std::nullopt,
                   },
                   menuActions(), platform_.dates);
}

SoundMenuActions AppDelegate::menuActions() {
  const auto action = [this](void (AppDelegate::*operation)()) {
    return alive_.guard([this, operation](const MenuItem&) { (this->*operation)(); });
  };
  return {
      .openSource = alive_.guard([this](const MenuItem& sender) { openSource(sender); }),
      .openExtensionStore = alive_.guard([this](const MenuItem& sender) { openExtensionStore(sender); }),
      .markAllSeen = action(&AppDelegate::markAllSeen),
      .openHistory = action(&AppDelegate::openHistory),
      .clearList = action(&AppDelegate::clearList),
      .openUpdate = action(&AppDelegate::openUpdate),
      .checkUpdates = action(&AppDelegate::checkUpdates),
      .openSettings = action(&AppDelegate::openSettings),
      .quit = action(&AppDelegate::quit),
  };
}

void AppDelegate::openSource(const MenuItem& sender) {
  const auto* event = std::any_cast<std::shared_ptr<SoundEvent>>(&sender.representedObject);
  if (event == nullptr || *event == nullptr) return;
  const std::shared_ptr<SoundEvent> kept = *event;  // `sender` may be destroyed while the source is opened
  kept->seen = true;
  refreshIcon();
  sourceOpener_.open(*kept);
}

void AppDelegate::openExtensionStore(const MenuItem& sender) {
  const auto* rawValue = std::any_cast<std::string>(&sender.representedObject);
  const auto browser = rawValue ? Browser::fromRawValue(*rawValue) : std::nullopt;
  if (!browser) return;
  if (*browser == Browser::safari) return link_.openSafariExtensionSettings();
  ExtensionPick::open({{.browser = *browser, .installed = browser->isInstalled(platform_.workspace)}}, platform_.bundle,
                      platform_.mainQueue, platform_.workspace);
}

void AppDelegate::markAllSeen() {
  for (const auto& event : recorder_.events) event->seen = true;
  refreshIcon();
}

void AppDelegate::openHistory() {
  const auto history = paths_.history();
  if (!platform_.files.exists(history)) platform_.files.writeAtomically(history, "");
  platform_.workspace.open(history, [](bool) {});
}

void AppDelegate::clearList() {
  recorder_.events.clear();
  recorder_.pendingTabs.clear();
  refreshIcon();
}

void AppDelegate::openUpdate() {
  if (const auto release = updater_.available()) platform_.workspace.openURL(release->url);
}

// One answer at a time, however often the user asks.
void AppDelegate::checkUpdates() {
  if (std::exchange(updateAnswerIsDue_, true)) return;
  updater_.check();
  const Duration delay = updater_.canAsk() ? Duration(Updater::answerDelay) : Duration::zero();
  platform_.mainQueue.after(delay, alive_.guard([this] { tellOfUpdates(); }));
}

// Shows what the check has found by now.
void AppDelegate::tellOfUpdates() {
  platform_.application.activateIgnoringOtherApps();
  platform_.alerts.show(updater_.alert(), alive_.guard([this](std::size_t) { updateAnswerIsDue_ = false; }));
}

void AppDelegate::openSettings() { showSettings(false); }

void AppDelegate::quit() { platform_.application.terminate(); }

void AppDelegate::refreshIcon() {
  if (!statusItem_) fatal("there is no status item to show the bell in.");
  const Bell bell = bellFor(recorder_.events, platform_.dates, watcher_.hearing(), platform_.wording);
  statusItem_->setImage(bell.symbolName, Bell::accessibilityDescription);
  statusItem_->setToolTip(bell.toolTip);
}

std::string AppDelegate::state() const { return stateReport(version(), watcher_.hearing(), link_, platform_.dates); }

std::string AppDelegate::version() const {
  return platform_.bundle.infoString("CFBundleShortVersionString").value_or("dev");
}

}  // namespace tollvane
