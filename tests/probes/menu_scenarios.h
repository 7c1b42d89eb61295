// Makes menus as Tollvane does, from sounds that a test or a picture needs.
//
//   MenuScenario scenario("six", [](const std::string& chosen) { ... });
//   bar.makeStatusItem()->setMenu(scenario);
//
// Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "menu/sound_menu.h"
#include "platform/clock.h"

namespace tollvane::test {

class MenuScenario : public MenuDelegate {
 public:
  // "none", "five", "six", "fifty", "tabs", "hint", "update", "hostile"; an unknown name is "none".
  // `onChoice` gets the identifier of each item that is chosen.
  MenuScenario(std::string_view name, std::function<void(const std::string&)> onChoice);

  void menuNeedsUpdate(Menu& menu) override;

  void addSound(std::string_view app, std::string_view kind);
  void addTab(std::string_view title, std::string_view host, bool withIdentifier = true);  // to the last sound added
  void seeAll();
  void clear() { events_.clear(); }

  int timesMade() const { return timesMade_; }

 private:
  void fill(std::string_view name);

  std::unique_ptr<DateFormatter> dates_;
  std::function<void(const std::string&)> onChoice_;
  std::vector<std::shared_ptr<SoundEvent>> events_;  // the newest first
  std::optional<std::string> version_;
  bool hint_ = false;
  int timesMade_ = 0;
};

}  // namespace tollvane::test
