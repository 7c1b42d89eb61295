// The state behind the settings window. Knows nothing of the browsers' connections: its owner hands in, once, what it
// asks about them. One for the life of the process. Main thread only.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/browser.h"
#include "model/paths.h"
#include "model/prefs.h"
#include "platform/bundle.h"
#include "platform/main_queue.h"
#include "platform/wording.h"
#include "platform/workspace.h"
#include "settings/extension_pick.h"
#include "settings/login_item.h"

namespace tollvane {

// One browser and how it stands with its extension.
struct BrowserRow {
  std::string id;  // the browser's raw value
  std::string name;
  std::string status;
  bool ok = false;

  bool operator==(const BrowserRow&) const = default;
};

class SettingsModel {
 public:
  // What an observer is told of: assigning it announces the change before it takes effect, like every assignment to
  // an observed value, whether it differs or not.
  template <typename T>
  class Published {
   public:
    Published(SettingsModel& model, T initial) : model_(model), value_(std::move(initial)) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    const T& operator*() const { return value_; }
    const T* operator->() const { return &value_; }
    void operator=(T value) {
      model_.announce();
      value_ = std::move(value);
    }

   private:
    SettingsModel& model_;
    T value_;
  };

  // All outlive it.
  SettingsModel(Workspace& workspace, const Bundle& bundle, MainQueue& queue, const Wording& wording, Prefs prefs,
                LoginItem& loginItem);

  // A change is about to happen; look again once the current work is done.
  std::function<void()> objectWillChange;

  Published<bool> markTabs;
  Published<bool> suggestExtension;
  Published<bool> startAtLogin;
  Published<std::optional<std::string>> loginNote;
  Published<std::vector<BrowserRow>> browsers;  // those that the picker does not offer
  Published<std::vector<ExtensionPick>> picks;
  Published<std::set<std::string>> ticked;  // raw values

  std::function<bool(Browser)> isConnected;
  std::function<void()> onMarkTabsChanged;
  std::function<std::vector<BrowserRow>()> browserStatus;
  std::function<void(std::function<void()>)> beforeRefresh;  // not called by anything here

  void setMarkTabs(bool on);
  void setSuggestExtension(bool on);

  // A change that the system refuses springs back, and the note says why.
  void setStartAtLogin(bool on);
  void setTicked(const std::string& rawValue, bool on);

  // Asks everything again. The first time only, ticks what is installed and not connected.
  void refresh();

  // Whether there is a site that leads to the browsers' stores.
  bool hasStores() const { return hasSite(bundle_); }

  // The icons of the browsers that have one, by raw value, for ui::ApplicationIcon. As they were at the last refresh().
  const std::map<std::string, std::string, std::less<>>& icons() const { return icons_; }

  // Opens the store pages of what is ticked, or a page that tells how to add the extension without a store.
  void addSelected();

 private:
  void announce() const {
    if (objectWillChange) objectWillChange();
  }

  Workspace& workspace_;
  const Bundle& bundle_;
  MainQueue& queue_;
  const Wording& wording_;
  Prefs prefs_;
  LoginItem& loginItem_;
  std::map<std::string, std::string, std::less<>> icons_;
  bool tickedOnce_ = false;
};

}  // namespace tollvane
