#include "tests/probes/menu_scenarios.h"

#include <chrono>
#include <utility>

#include "platform/linux/system/clock_and_dates.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;

// The time of the first sound. Each sound is 97 seconds after the one before, so the hours of fifty sounds have one
// digit or two.
constexpr TimePoint first{std::chrono::seconds{1'793'970'000}};

std::string repeated(std::string_view text, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

}  // namespace

MenuScenario::MenuScenario(std::string_view name, std::function<void(const std::string&)> onChoice)
    : dates_(std::make_unique<IcuDateFormatter>()), onChoice_(std::move(onChoice)) {
  fill(name);
}

void MenuScenario::addSound(std::string_view app, std::string_view kind) {
  const auto date = first + 97s * events_.size();
  events_.insert(events_.begin(), std::make_shared<SoundEvent>(date, app, kind));
}

void MenuScenario::addTab(std::string_view title, std::string_view host, bool withIdentifier) {
  SoundEvent& event = *events_.front();
  event.tabTitle = title;
  event.tabHost = host;
  event.browser = Browser::firefox;
  if (withIdentifier) event.tabId = 7;
}

void MenuScenario::seeAll() {
  for (const auto& event : events_) event->seen = true;
}

void MenuScenario::fill(std::string_view name) {
  if (name == "hostile") {
    addSound("", kind::alertSound);
    addSound(repeated("Long name ", 50), kind::startedPlayingAudio);
    addSound("<b>Bold</b> & _under_ &amp; \tTab", kind::alertSound);
    addSound("\xd7\x94\xd7\xa7\xd7\x9c\xd7\x98\xd7\x94 (rec)", kind::notificationSound);
    addSound("\xcc\x81\xcc\x82 marks", kind::alertSound);
    addTab(
        "<a href='x'>link</a> &amp; \xe2\x80\xae"
        "evil\xe2\x80\xac\nsecond\tcolumn",
        "example.org");
    addSound("Firefox", kind::startedPlayingAudio);
    addTab("\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d \xd7\xa2\xd7\x95\xd7\x9c\xd7\x9d \xd7\x9e\xd7\x91\xd7\x97\xd7\x9f",
           "example.co.il");
    addSound("Firefox", kind::startedPlayingAudio);
    addTab(repeated("0123456789", 1000), "example.org");
    addSound("Firefox", kind::startedPlayingAudio);
    addTab("e" + repeated("\xcc\x81\xcc\xa7\xcd\x9c", 3000), "example.org");
    return;
  }
  if (name == "fifty") {
    const std::string_view apps[] = {"Mail", "Calendar", "Firefox", "Signal", "Terminal", "Rhythmbox"};
    const std::string_view kinds[] = {kind::notificationSound, kind::alertSound, kind::startedPlayingAudio};
    for (int i = 0; i < 50; ++i) {
      addSound(apps[i % 6], kinds[i % 3]);
      if (i % 6 == 2) addTab("A song for a slow afternoon, live", "music.example");
      if (i < 44) seeAll();
    }
    return;
  }
  if (name == "none" || name.empty()) return;
  if (name != "five" && name != "tabs" && name != "hint") addSound("Rhythmbox", kind::startedPlayingAudio);
  addSound("Terminal", kind::alertSound);
  addSound("Firefox", kind::startedPlayingAudio);
  addTab("Inbox (3) \xe2\x80\x94 me@example.org", "mail.example");
  addSound("Signal", kind::notificationSound);
  seeAll();
  addSound("Calendar", kind::notificationSound);
  if (name == "tabs")
    addTab("Team call \xc2\xb7 weekly planning with everybody who has ever been invited to one", "meet.example");
  addSound(name == "hint" || name == "tabs" ? "Firefox" : "Mail",
           name == "hint" || name == "tabs" ? kind::startedPlayingAudio : kind::notificationSound);
  if (name == "tabs") addTab("Night music for rainy streets \xe2\x80\x93 YouTube", "youtube.com");
  hint_ = name == "hint";
  if (name == "update") version_ = "0.2.0";
}

void MenuScenario::menuNeedsUpdate(Menu& menu) {
  ++timesMade_;
  const auto chosen = [this](const MenuItem& item) { onChoice_(item.identifier); };
  const SoundMenuActions actions{
      .openSource = chosen,
      .openExtensionStore = chosen,
      .markAllSeen =
          [this, chosen](const MenuItem& item) {
            seeAll();
            chosen(item);
          },
      .openHistory = chosen,
      .clearList =
          [this, chosen](const MenuItem& item) {
            clear();
            chosen(item);
          },
      .openUpdate = chosen,
      .checkUpdates = chosen,
      .openSettings = chosen,
      .quit = chosen,
  };
  const SoundMenuContents contents{
      .events = events_,
      .suggestExtension = hint_,
      .browser = [](const SoundEvent& event) -> std::optional<Browser> {
        return event.app == "Firefox" ? std::optional(Browser::firefox) : std::nullopt;
      },
      .isConnected = [](Browser) { return false; },
      .availableVersion = version_,
  };
  menu = soundMenu(contents, actions, *dates_);
}

}  // namespace tollvane::test
