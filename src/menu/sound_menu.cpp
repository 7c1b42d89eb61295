#include "menu/sound_menu.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "menu/bell.h"

namespace tollvane {
namespace {

constexpr Font digits{FontFamily::monospacedDigits};
constexpr Font smallType{FontFamily::system, 12};
constexpr Font smallMediumType{FontFamily::system, 12, FontWeight::medium};
constexpr Font semibold{FontFamily::system, menuFontSize, FontWeight::semibold};

// As wide as a time and the blanks after it, so that a second line starts under the application's name.
constexpr std::string_view indent = "              ";

MenuItem command(std::string_view identifier, std::string_view title, const MenuItem::Action& action,
                 std::string_view keyEquivalent = "") {
  MenuItem item;
  item.identifier = identifier;
  item.title = title;
  item.action = action;
  item.keyEquivalent = keyEquivalent;
  return item;
}

MenuItem separator(std::string_view identifier) {
  MenuItem item;
  item.identifier = identifier;
  item.isSeparator = true;
  return item;
}

MenuItem header(bool anySounds, std::ptrdiff_t unseen) {
  std::string title = anySounds ? "Recent sounds" : "No sounds yet";
  if (unseen > 0) title += " · " + std::to_string(unseen) + " unseen";
  MenuItem item = command("header", title, nullptr);
  item.isEnabled = false;
  return item;
}

std::string hintToolTip(Browser browser, bool hasStores) {
  if (browser == Browser::safari) return "Opens Safari's extension settings";
  const std::string name(browser.appName());
  return hasStores ? "Opens the free Tollvane extension in " + name + "'s store"
                   : "Shows how to add the free Tollvane extension to " + name;
}

MenuItem extensionHint(Browser browser, bool hasStores, const MenuItem::Action& openExtensionStore) {
  const bool safari = browser == Browser::safari;
  MenuItem item = command("extensionHint", "", openExtensionStore);
  item.attributedTitle = {
      {std::string(indent), digits, TextColor::unset},
      {safari ? "Turn on Tollvane in Safari Settings, Extensions to see the exact tab ›"
              : "Add the free extension to see the exact tab and go straight to it ›",
       smallMediumType, TextColor::controlAccent},
  };
  item.toolTip = hintToolTip(browser, hasStores);
  item.representedObject = std::string(browser.rawValue());
  return item;
}

// The browser whose extension is worth offering for this sound.
std::optional<Browser> missingExtension(const SoundEvent& event, const SoundMenuContents& contents) {
  if (event.hasTab()) return std::nullopt;
  const auto browser = contents.browser(event);
  return browser && !contents.isConnected(*browser) ? browser : std::nullopt;
}

void addSounds(std::vector<MenuItem>& items, const SoundMenuContents& contents, const SoundMenuActions& actions,
               const DateFormatter& dates) {
  // The extension is offered once, under the newest sound that needs it, and only for sounds in the menu itself.
  bool offered = !contents.suggestExtension;
  const auto& events = contents.events;
  const std::size_t top = std::min(events.size(), topCount);
  for (std::size_t i = 0; i < top; ++i) {
    items.push_back(menuItem(events[i], actions.openSource, dates));
    if (offered) continue;
    if (const auto browser = missingExtension(*events[i], contents)) {
      items.push_back(extensionHint(*browser, contents.hasStores, actions.openExtensionStore));
      offered = true;
    }
  }
  if (events.size() == top) return;

  MenuItem older = command("older", "Older sounds (" + std::to_string(events.size() - top) + ")", nullptr);
  for (std::size_t i = top; i < events.size(); ++i)
    older.submenu.push_back(menuItem(events[i], actions.openSource, dates));
  items.push_back(std::move(older));
}

MenuItem updateItem(const std::string& version, const MenuItem::Action& openUpdate) {
  MenuItem item = command("openUpdate", "", openUpdate);
  item.attributedTitle = {{"Update available: version " + version + "…", semibold, TextColor::unset}};
  return item;
}

// A sound is identified by its time, its application and its kind.
std::string identifierOf(const SoundEvent& event) {
  return "sound " + std::to_string(event.date.time_since_epoch().count()) + ' ' + event.kind + ' ' + event.app;
}

}  // namespace

MenuItem menuItem(const std::shared_ptr<SoundEvent>& event, const MenuItem::Action& openSource,
                  const DateFormatter& dates) {
  const auto fading = [&](TextColor color) { return event->seen ? TextColor::tertiaryLabel : color; };
  MenuItem item = command(identifierOf(*event), "", openSource);
  item.attributedTitle = {
      {dates.string(timeFormat, event->date) + "   ", digits, fading(TextColor::secondaryLabel)},
      {event->app, event->seen ? Font{} : semibold, fading(TextColor::label)},
      {"   " + event->kind, smallType, fading(TextColor::secondaryLabel)},
  };
  if (const auto label = event->tabLabel()) {
    item.attributedTitle.push_back({"\n" + std::string(indent), digits, TextColor::unset});
    item.attributedTitle.push_back({"Tab: " + *label, smallMediumType, fading(TextColor::controlAccent)});
  }
  item.toolTip = event->hasTab() ? "Click to go to this tab" : "Click to open " + event->app;
  item.representedObject = event;
  return item;
}

Menu soundMenu(const SoundMenuContents& contents, const SoundMenuActions& actions, const DateFormatter& dates) {
  const auto& events = contents.events;
  const auto unseen = std::count_if(events.begin(), events.end(), [](const auto& event) { return !event->seen; });

  Menu menu;
  auto& items = menu.items;
  items.push_back(header(!events.empty(), unseen));
  addSounds(items, contents, actions, dates);
  items.push_back(separator("afterSounds"));
  items.push_back(command("markAllSeen", "Mark all as seen", actions.markAllSeen));
  items.back().isEnabled = unseen > 0;
  items.push_back(command("openHistory", "Open full history", actions.openHistory, "h"));
  items.push_back(command("clearList", "Clear list", actions.clearList));
  items.push_back(separator("afterList"));
  if (contents.availableVersion) items.push_back(updateItem(*contents.availableVersion, actions.openUpdate));
  items.push_back(command("checkUpdates", "Check for updates", actions.checkUpdates));
  items.push_back(command("browserExtensions", "Browser extensions…", actions.openSettings));
  items.push_back(command("settings", "Settings…", actions.openSettings, ","));
  items.push_back(command("quit", "Quit Tollvane", actions.quit, "q"));
  return menu;
}

}  // namespace tollvane
