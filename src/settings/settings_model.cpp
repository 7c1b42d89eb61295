#include "settings/settings_model.h"

#include <algorithm>
#include <utility>

namespace tollvane {
namespace {

bool isOffered(const BrowserRow& row) {
  return std::any_of(ExtensionPick::offered.begin(), ExtensionPick::offered.end(),
                     [&](Browser browser) { return row.id == browser.rawValue(); });
}

}  // namespace

SettingsModel::SettingsModel(Workspace& workspace, const Bundle& bundle, MainQueue& queue, const Wording& wording,
                             Prefs prefs, LoginItem& loginItem)
    : markTabs(*this, prefs.markTabs()),
      suggestExtension(*this, prefs.suggestExtension()),
      startAtLogin(*this, loginItem.isEnabled()),
      loginNote(*this, std::nullopt),
      browsers(*this, {}),
      picks(*this, {}),
      ticked(*this, {}),
      workspace_(workspace),
      bundle_(bundle),
      queue_(queue),
      wording_(wording),
      prefs_(prefs),
      loginItem_(loginItem) {}

void SettingsModel::setMarkTabs(bool on) {
  markTabs = on;
  prefs_.setMarkTabs(on);
  if (onMarkTabsChanged) onMarkTabsChanged();
}

void SettingsModel::setSuggestExtension(bool on) {
  suggestExtension = on;
  prefs_.setSuggestExtension(on);
}

void SettingsModel::setStartAtLogin(bool on) {
  const auto refused = loginItem_.set(on, AskedBy::user);
  loginNote = refused ? std::optional(std::string(wording_.changeNotAllowed) + *refused) : std::nullopt;
  refresh();
}

void SettingsModel::setTicked(const std::string& rawValue, bool on) {
  auto now = *ticked;
  if (on) {
    now.insert(rawValue);
  } else {
    now.erase(rawValue);
  }
  ticked = std::move(now);
}

void SettingsModel::refresh() {
  const LoginStatus status = loginItem_.status();
  startAtLogin = status == LoginStatus::enabled;
  if (status == LoginStatus::requiresApproval) loginNote = std::string(wording_.approveLoginItem);

  icons_.clear();
  for (const Browser browser : Browser::allCases) {
    for (const std::string_view edition : browser.editions()) {
      const auto name = workspace_.icon(edition);
      if (name.empty()) continue;
      icons_.emplace(browser.rawValue(), name);
      break;
    }
  }

  auto rows = browserStatus ? browserStatus() : std::vector<BrowserRow>();
  std::erase_if(rows, isOffered);
  browsers = std::move(rows);

  std::vector<ExtensionPick> offered;
  for (const Browser browser : ExtensionPick::offered) {
    offered.push_back({.browser = browser,
                       .installed = browser.isInstalled(workspace_),
                       .connected = isConnected && isConnected(browser)});
  }
  picks = std::move(offered);

  if (std::exchange(tickedOnce_, true)) return;
  std::set<std::string> worthAdding;
  for (const ExtensionPick& pick : *picks)
    if (pick.installed && !pick.connected) worthAdding.emplace(pick.id());
  ticked = std::move(worthAdding);
}

void SettingsModel::addSelected() {
  auto selected = *picks;
  std::erase_if(selected, [this](const ExtensionPick& pick) { return !ticked->contains(std::string(pick.id())); });
  ExtensionPick::open(selected, bundle_, queue_, workspace_);
}

}  // namespace tollvane
