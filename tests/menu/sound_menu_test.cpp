#include "menu/sound_menu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

constexpr Font digits{FontFamily::monospacedDigits, 13, FontWeight::regular};
constexpr Font regular{FontFamily::system, 13, FontWeight::regular};
constexpr Font semibold{FontFamily::system, 13, FontWeight::semibold};
constexpr Font small{FontFamily::system, 12, FontWeight::regular};
constexpr Font smallMedium{FontFamily::system, 12, FontWeight::medium};
const std::string fourteenBlanks(14, ' ');

class SoundMenuTest : public testing::Test {
 protected:
  SoundMenuTest() {
    const auto remember = [this](std::string name) {
      return [this, name](const MenuItem&) { performed.push_back(name); };
    };
    actions = {
        .openSource = remember("openSource"),
        .openExtensionStore = remember("openExtensionStore"),
        .markAllSeen = remember("markAllSeen"),
        .openHistory = remember("openHistory"),
        .clearList = remember("clearList"),
        .openUpdate = remember("openUpdate"),
        .checkUpdates = remember("checkUpdates"),
        .openSettings = remember("openSettings"),
        .quit = remember("quit"),
    };
  }

  // Adds a sound that is one second older than the one added before it.
  std::shared_ptr<SoundEvent> addOlder(std::string_view app, std::string_view what = kind::alertSound) {
    events.push_back(std::make_shared<SoundEvent>(clock.now() - events.size() * 1s, app, what));
    return events.back();
  }

  Menu menu() const {
    return soundMenu({.events = events,
                      .suggestExtension = suggestExtension,
                      .browser = [](const SoundEvent& event) { return Browser::fromAppName(event.app); },
                      .isConnected = [this](Browser browser) { return browser == connected; },
                      .availableVersion = availableVersion},
                     actions, dates);
  }

  static std::string titleOf(const MenuItem& item) {
    if (item.isSeparator) return "-";
    return item.attributedTitle.empty() ? item.title : plainText(item.attributedTitle);
  }
  static std::vector<std::string> titles(const std::vector<MenuItem>& items) {
    std::vector<std::string> result;
    for (const MenuItem& item : items) result.push_back(titleOf(item));
    return result;
  }
  static const MenuItem* find(const Menu& menu, std::string_view beginning) {
    for (const MenuItem& item : menu.items)
      if (titleOf(item).starts_with(beginning)) return &item;
    return nullptr;
  }
  static const MenuItem* hintIn(const std::vector<MenuItem>& items) {
    for (const MenuItem& item : items)
      if (titleOf(item).ends_with("›")) return &item;
    return nullptr;
  }

  test::VirtualClock clock;
  test::VirtualDates dates;
  std::vector<std::shared_ptr<SoundEvent>> events;
  bool suggestExtension = true;
  std::optional<Browser> connected;
  std::optional<std::string> availableVersion;
  SoundMenuActions actions;
  mutable std::vector<std::string> performed;
};

TEST_F(SoundMenuTest, AnEmptyListHasAHeaderNoEntriesAndNothingToMark) {
  const Menu shown = menu();
  EXPECT_THAT(titles(shown.items),
              ElementsAre("No sounds yet", "-", "Mark all as seen", "Open full history", "Clear list", "-",
                          "Check for updates", "Browser extensions…", "Settings…", "Quit Tollvane"));
  EXPECT_FALSE(find(shown, "Mark all")->isEnabled);
  for (const MenuItem& item : shown.items) EXPECT_TRUE(item.submenu.empty());
}

TEST_F(SoundMenuTest, TheHeaderIsDisabledAndDoesNothing) {
  const MenuItem header = menu().items.front();
  EXPECT_FALSE(header.isEnabled);
  EXPECT_FALSE(header.action);
}

TEST_F(SoundMenuTest, TheHeaderCountsWhatIsUnseen) {
  addOlder("Mail");
  addOlder("Chat")->seen = true;
  EXPECT_EQ(menu().items.front().title, "Recent sounds · 1 unseen");
  events[0]->seen = true;
  EXPECT_EQ(menu().items.front().title, "Recent sounds");
}

TEST_F(SoundMenuTest, CommandsHaveTheirKeysAndActions) {
  addOlder("Mail");
  availableVersion = "2.0";
  const Menu shown = menu();
  struct Row {
    std::string_view title, key, action;
  };
  for (const Row& row : {
           Row{"Mark all as seen", "", "markAllSeen"},
           Row{"Open full history", "h", "openHistory"},
           Row{"Clear list", "", "clearList"},
           Row{"Update available: version 2.0…", "", "openUpdate"},
           Row{"Check for updates", "", "checkUpdates"},
           Row{"Browser extensions…", "", "openSettings"},
           Row{"Settings…", ",", "openSettings"},
           Row{"Quit Tollvane", "q", "quit"},
       }) {
    const MenuItem* item = find(shown, row.title);
    ASSERT_NE(item, nullptr) << row.title;
    EXPECT_EQ(titleOf(*item), row.title);
    EXPECT_EQ(item->keyEquivalent, row.key) << row.title;
    EXPECT_TRUE(item->isEnabled) << row.title;
    performed.clear();
    item->action(*item);
    EXPECT_THAT(performed, ElementsAre(std::string(row.action))) << row.title;
  }
}

TEST_F(SoundMenuTest, WithEverythingSeenThereIsNothingToMark) {
  addOlder("Mail")->seen = true;
  EXPECT_FALSE(find(menu(), "Mark all")->isEnabled);
}

TEST_F(SoundMenuTest, AnUpdateStandsInSemiboldAboveTheCheck) {
  availableVersion = "1.10";
  const Menu shown = menu();
  const MenuItem* update = find(shown, "Update available");
  EXPECT_THAT(update->attributedTitle,
              ElementsAre(TextRun{"Update available: version 1.10…", semibold, TextColor::unset}));
  EXPECT_EQ((update + 1)->title, "Check for updates");
}

TEST_F(SoundMenuTest, FiveSoundsAreAllInTheMenu) {
  for (const char* app : {"A", "B", "C", "D", "E"}) addOlder(app);
  const Menu shown = menu();
  EXPECT_EQ(titles(shown.items)[5], "2:05:05 PM   E   alert sound");
  EXPECT_TRUE(shown.items[6].isSeparator);
  EXPECT_EQ(find(shown, "Older sounds"), nullptr);
}

TEST_F(SoundMenuTest, TheSixthSoundIsOlder) {
  for (const char* app : {"A", "B", "C", "D", "E", "F"}) addOlder(app);
  const Menu shown = menu();
  const MenuItem& older = shown.items[6];
  EXPECT_EQ(older.title, "Older sounds (1)");
  EXPECT_FALSE(older.action);
  EXPECT_TRUE(older.isEnabled);
  EXPECT_THAT(titles(older.submenu), ElementsAre("2:05:04 PM   F   alert sound"));
  EXPECT_TRUE(shown.items[7].isSeparator);
}

TEST_F(SoundMenuTest, OfFiftySoundsFortyFiveAreOlderInTheirOrder) {
  for (int i = 0; i < 50; ++i) addOlder("App " + std::to_string(i));
  const Menu shown = menu();
  const MenuItem* older = find(shown, "Older sounds (45)");
  ASSERT_NE(older, nullptr);
  ASSERT_EQ(older->submenu.size(), 45u);
  EXPECT_EQ(std::any_cast<std::shared_ptr<SoundEvent>>(older->submenu.front().representedObject), events[5]);
  EXPECT_EQ(std::any_cast<std::shared_ptr<SoundEvent>>(older->submenu.back().representedObject), events[49]);
}

TEST_F(SoundMenuTest, AnUnseenEntryIsTimeSemiboldNameAndSmallKind) {
  addOlder("Mail", kind::notificationSound);
  EXPECT_THAT(menu().items[1].attributedTitle,
              ElementsAre(TextRun{"2:05:09 PM   ", digits, TextColor::secondaryLabel},
                          TextRun{"Mail", semibold, TextColor::label},
                          TextRun{"   notification sound", small, TextColor::secondaryLabel}));
}

TEST_F(SoundMenuTest, ASeenEntryFadesAndIsRegular) {
  const auto event = addOlder("Firefox", kind::startedPlayingAudio);
  event->seen = true;
  event->tabTitle = "Inbox";
  EXPECT_THAT(menu().items[1].attributedTitle,
              ElementsAre(TextRun{"2:05:09 PM   ", digits, TextColor::tertiaryLabel},
                          TextRun{"Firefox", regular, TextColor::tertiaryLabel},
                          TextRun{"   started playing audio", small, TextColor::tertiaryLabel},
                          TextRun{"\n" + fourteenBlanks, digits, TextColor::unset},
                          TextRun{"Tab: Inbox", smallMedium, TextColor::tertiaryLabel}));
}

TEST_F(SoundMenuTest, AnEntryWithATabHasASecondLineInTheAccentColour) {
  const auto event = addOlder("Firefox", kind::startedPlayingAudio);
  event->tabTitle = "Inbox";
  event->tabHost = "mail.example.org";
  const auto title = menu().items[1].attributedTitle;
  ASSERT_EQ(title.size(), 5u);
  EXPECT_EQ(title[3], (TextRun{"\n" + fourteenBlanks, digits, TextColor::unset}));
  EXPECT_EQ(title[4], (TextRun{"Tab: Inbox  (mail.example.org)", smallMedium, TextColor::controlAccent}));
}

TEST_F(SoundMenuTest, AnEntryHasNoPlainTitleAndIsAboutItsEvent) {
  const auto event = addOlder("Mail");
  const Menu shown = menu();
  const MenuItem& item = shown.items[1];
  EXPECT_EQ(item.title, "");
  EXPECT_EQ(item.keyEquivalent, "");
  EXPECT_EQ(std::any_cast<std::shared_ptr<SoundEvent>>(item.representedObject), event);
  item.action(item);
  EXPECT_THAT(performed, ElementsAre("openSource"));
}

TEST_F(SoundMenuTest, TheToolTipSaysWhereAClickGoes) {
  addOlder("Mail");
  addOlder("Firefox")->tabId = 7;
  const Menu shown = menu();
  EXPECT_EQ(shown.items[1].toolTip, "Click to open Mail");
  EXPECT_EQ(find(shown, "2:05:08")->toolTip, "Click to go to this tab");
}

TEST_F(SoundMenuTest, ATabWithAnEmptyTitleIsStillATab) {
  addOlder("Firefox")->tabTitle = "";
  EXPECT_EQ(menu().items[1].toolTip, "Click to go to this tab");
  EXPECT_EQ(hintIn(menu().items), nullptr);
}

TEST_F(SoundMenuTest, TheHintStandsRightBeneathItsSound) {
  addOlder("Mail");
  addOlder("Google Chrome");
  addOlder("Chat");
  const Menu shown = menu();
  const MenuItem& hint = shown.items[3];
  EXPECT_THAT(hint.attributedTitle,
              ElementsAre(TextRun{fourteenBlanks, digits, TextColor::unset},
                          TextRun{"Add the free extension to see the exact tab and go straight to it ›", smallMedium,
                                  TextColor::controlAccent}));
  EXPECT_EQ(hint.toolTip, "Opens the free Tollvane extension in Google Chrome's store");
  EXPECT_EQ(std::any_cast<std::string>(hint.representedObject), "chrome");
  EXPECT_EQ(hint.keyEquivalent, "");
  EXPECT_TRUE(hint.isEnabled);
  hint.action(hint);
  EXPECT_THAT(performed, ElementsAre("openExtensionStore"));
}

TEST_F(SoundMenuTest, SafariHasItsOwnHint) {
  addOlder("Safari");
  const Menu shown = menu();
  const MenuItem& hint = shown.items[2];
  EXPECT_EQ(titleOf(hint), fourteenBlanks + "Turn on Tollvane in Safari Settings, Extensions to see the exact tab ›");
  EXPECT_EQ(hint.toolTip, "Opens Safari's extension settings");
  EXPECT_EQ(std::any_cast<std::string>(hint.representedObject), "safari");
}

TEST_F(SoundMenuTest, OnlyTheNewestSoundThatNeedsTheHintGetsIt) {
  addOlder("Firefox");
  addOlder("Google Chrome");
  const auto shown = titles(menu().items);
  EXPECT_EQ(std::count_if(shown.begin(), shown.end(), [](const auto& title) { return title.ends_with("›"); }), 1);
  EXPECT_TRUE(shown[2].ends_with("›"));
}

TEST_F(SoundMenuTest, TheFifthSoundMayGetTheHint) {
  for (const char* app : {"A", "B", "C", "D", "Firefox"}) addOlder(app);
  EXPECT_NE(hintIn(menu().items), nullptr);
}

TEST_F(SoundMenuTest, TheSeventhSoundGetsNoHintAnywhere) {
  for (const char* app : {"A", "B", "C", "D", "E", "F", "Firefox"}) addOlder(app);
  const Menu shown = menu();
  EXPECT_EQ(hintIn(shown.items), nullptr);
  EXPECT_EQ(hintIn(find(shown, "Older sounds")->submenu), nullptr);
}

TEST_F(SoundMenuTest, ASoundWithATabOrAConnectedExtensionGetsNoHint) {
  addOlder("Google Chrome")->tabHost = "example.org";
  EXPECT_EQ(hintIn(menu().items), nullptr);
  events.clear();
  addOlder("Google Chrome");
  connected = Browser::chrome;
  EXPECT_EQ(hintIn(menu().items), nullptr);
  connected = Browser::firefox;
  EXPECT_NE(hintIn(menu().items), nullptr);
}

TEST_F(SoundMenuTest, AHintThatIsTurnedOffIsNeverShown) {
  suggestExtension = false;
  addOlder("Google Chrome");
  EXPECT_EQ(hintIn(menu().items), nullptr);
}

TEST_F(SoundMenuTest, EachItemHasItsOwnIdentifier) {
  for (int i = 0; i < 50; ++i) addOlder(i % 2 ? "Firefox" : "Mail");
  availableVersion = "2.0";
  const Menu shown = menu();
  std::set<std::string> seen;
  std::size_t count = 0;
  const std::function<void(const std::vector<MenuItem>&)> visit = [&](const std::vector<MenuItem>& items) {
    for (const MenuItem& item : items) {
      seen.insert(item.identifier);
      ++count;
      visit(item.submenu);
    }
  };
  visit(shown.items);
  EXPECT_EQ(seen.size(), count);
  EXPECT_FALSE(seen.contains(""));
}

TEST_F(SoundMenuTest, AnItemKeepsItsIdentifier) {
  const auto event = addOlder("Mail");
  const auto before = menu().items[1].identifier;
  event->seen = true;
  events.insert(events.begin(), std::make_shared<SoundEvent>(clock.now() + 1s, "Mail", kind::alertSound));
  EXPECT_EQ(menu().items[2].identifier, before);
}

TEST_F(SoundMenuTest, TextsFromOutsideAreTakenAsTheyAre) {
  const std::string wild = "<b>&amp;_\t\xE2\x80\xAE" + std::string(10000, 'x');
  const auto event = addOlder(wild);
  event->tabTitle = "a\nb";
  const Menu shown = menu();
  EXPECT_EQ(shown.items[1].attributedTitle[1].text, wild);
  EXPECT_EQ(shown.items[1].attributedTitle[4].text, "Tab: a\nb");
}

}  // namespace
}  // namespace tollvane
