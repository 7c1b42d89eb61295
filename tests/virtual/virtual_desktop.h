// The virtual roles that show something to the user or ask others: status bar, alerts, windows, web, browser services,
// login.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "tests/virtual/virtual_time.h"

namespace tollvane::test {

class VirtualStatusBar : public StatusBar {
 public:
  struct Shown {
    std::string symbolName;
    std::string accessibilityDescription;
    std::string toolTip;
    MenuDelegate* menuDelegate = nullptr;
  };

  std::unique_ptr<StatusItem> makeStatusItem() override {
    if (broken) return nullptr;
    ++itemsMade;
    if (journal) journal->note("status item");
    return std::make_unique<Item>(shown);
  }

  // Opens the menu, and returns it as the user sees it.
  Menu openMenu() const {
    Menu menu;
    shown.menuDelegate->menuNeedsUpdate(menu);
    return menu;
  }

  Shown shown;
  int itemsMade = 0;
  Journal* journal = nullptr;
  bool broken = false;

 private:
  struct Item : StatusItem {
    explicit Item(Shown& where) : shown(where) {}
    void setImage(std::string_view symbolName, std::string_view accessibilityDescription) override {
      shown.symbolName = symbolName;
      shown.accessibilityDescription = accessibilityDescription;
    }
    void setToolTip(std::string_view text) override { shown.toolTip = text; }
    void setMenu(MenuDelegate& delegate) override { shown.menuDelegate = &delegate; }
    Shown& shown;
  };
};

// Writes dates in English and UTC, in the two patterns that Tollvane uses.
class VirtualDates : public DateFormatter {
 public:
  std::string string(std::string_view pattern, TimePoint time) const override;
};

// Remembers its calls, in their order.
class VirtualApplication : public Application, public Alerts {
 public:
  void activateIgnoringOtherApps() override { frontmost = true; }
  void terminate() override { terminated = true; }
  void show(const Alert& alert, std::function<void(std::size_t)> answer) override {
    alertsBehindOthers += frontmost ? 0 : 1;
    frontmost = false;
    alerts.push_back(alert);
    answers.push_back(std::move(answer));
  }

  bool frontmost = false;
  bool terminated = false;
  int alertsBehindOthers = 0;  // shown without bringing the application forward first
  std::vector<Alert> alerts;
  std::vector<std::function<void(std::size_t)>> answers;
};

// A web site that answers the last request when the test says so. A request that is not allowed and an answer that is
// too long give no answer.
class VirtualHttp : public Http {
 public:
  void get(const HttpRequest& request, std::function<void(std::optional<HttpResponse>)> completion) override {
    requests.push_back(request);
    if (journal) journal->note("web");
    completions.push_back(std::move(completion));
  }
  void answer(std::optional<HttpResponse> response) {
    const std::string& url = requests.back().url;
    const bool mayBeAsked = url.starts_with("https://") || url.starts_with("http://127.0.0.1/");
    if (!mayBeAsked || (response && response->body.size() > maxBody)) response = std::nullopt;
    completions.back()(std::move(response));
  }

  Journal* journal = nullptr;
  std::vector<HttpRequest> requests;
  std::vector<std::function<void(std::optional<HttpResponse>)>> completions;
};

class VirtualSafari : public SafariServices {
 public:
  void dispatchMessage(std::string_view name, std::string_view extensionID, std::string_view userInfo) override {
    sent.push_back(std::string(name) + " " + std::string(extensionID) + " " + std::string(userInfo));
  }
  void getState(std::string_view, std::function<void(std::optional<bool>)> completion) override {
    ++statesAsked;
    if (journal) journal->note("safari");
    completion(state);
  }
  Journal* journal = nullptr;
  void showPreferences(std::string_view extensionID) override { preferencesShown.emplace_back(extensionID); }

  std::optional<bool> state;
  int statesAsked = 0;
  std::vector<std::string> sent;
  std::vector<std::string> preferencesShown;
};

class VirtualLogin : public LoginService {
 public:
  LoginStatus status() const override { return state; }
  std::optional<std::string> registerApplication(AskedBy by) override {
    const bool staysOff = by == AskedBy::program && state == LoginStatus::requiresApproval;
    return change(staysOff ? state : LoginStatus::enabled);
  }
  std::optional<std::string> unregisterApplication() override { return change(LoginStatus::notRegistered); }

  LoginStatus state = LoginStatus::notRegistered;
  std::optional<std::string> refusal;
  int changes = 0;
  Journal* journal = nullptr;

 private:
  std::optional<std::string> change(LoginStatus wanted) {
    ++changes;
    if (journal) journal->note("login");
    if (!refusal) state = wanted;
    return refusal;
  }
};

class VirtualSettingsWindows : public SettingsWindows {
 public:
  struct Shown {
    SettingsWindow::Style style;
    ui::SettingsContent content;
    int drawn = 0;
    int broughtForward = 0;
  };

  std::unique_ptr<SettingsWindow> make(const SettingsWindow::Style& style) override {
    windows.push_back(std::make_shared<Shown>(Shown{style, {}}));
    if (journal) journal->note("window");
    return std::make_unique<Window>(windows.back());
  }

  std::vector<std::shared_ptr<Shown>> windows;
  Journal* journal = nullptr;

 private:
  struct Window : SettingsWindow {
    explicit Window(std::shared_ptr<Shown> where) : shown(std::move(where)) {}
    void setContent(const ui::SettingsContent& content) override {
      shown->content = content;
      ++shown->drawn;
    }
    void makeKeyAndOrderFront() override { ++shown->broughtForward; }
    std::shared_ptr<Shown> shown;
  };
};

}  // namespace tollvane::test
