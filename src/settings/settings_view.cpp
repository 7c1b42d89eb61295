#include "settings/settings_view.h"

#include <algorithm>

namespace tollvane {
namespace {

using ui::TextStyle;

ui::Text caption(std::string_view text, TextColor color = TextColor::secondaryLabel) {
  return {std::string(text), TextStyle::caption, color};
}

ui::Text callout(std::string_view text) { return {std::string(text), TextStyle::callout, TextColor::secondaryLabel}; }

ui::Toggle switchFor(std::string_view identifier, std::string_view title, bool isOn, std::function<void(bool)> set) {
  return {std::string(identifier), std::string(title), ui::Toggle::Style::switchControl, isOn, std::move(set)};
}

ui::Section general(SettingsModel& model) {
  ui::Section section{"General", {}};
  section.elements.emplace_back(switchFor("startAtLogin", "Start Tollvane when you log in", *model.startAtLogin,
                                          [&model](bool on) { model.setStartAtLogin(on); }));
  if (*model.loginNote) section.elements.emplace_back(caption(**model.loginNote, TextColor::orange));
  section.elements.emplace_back(switchFor("markTabs", "Mark browser tabs that made a sound", *model.markTabs,
                                          [&model](bool on) { model.setMarkTabs(on); }));
  section.elements.emplace_back(
      caption("Adds a ♪ to the title of a background tab that played sound, until you visit it."));
  return section;
}

ui::Text pickStatus(const ExtensionPick& pick, const Wording& wording) {
  if (pick.connected) return caption("Added", TextColor::green);
  return caption(pick.installed ? "" : wording.notFoundHere);
}

// Names stand below each other, so there is room for an icon in all rows or in none.
void addIcon(ui::Row& row, const SettingsModel& model) {
  const auto& icons = model.icons();
  if (icons.empty()) return;
  const auto found = icons.find(row.identifier);
  row.controls.emplace_back(ui::ApplicationIcon{found == icons.end() ? "" : found->second});
}

ui::Row pickRow(SettingsModel& model, const ExtensionPick& pick, const Wording& wording) {
  const std::string id(pick.id());
  const std::string name(pick.browser.appName());
  ui::Row row{id, {}};
  if (pick.connected) {
    row.controls.emplace_back(ui::Image{"checkmark.circle.fill", TextColor::green});
  } else {
    row.controls.emplace_back(ui::Toggle{id, name, ui::Toggle::Style::checkBox, model.ticked->contains(id),
                                         [&model, id](bool on) { model.setTicked(id, on); }});
  }
  addIcon(row, model);
  row.controls.emplace_back(ui::Text{name});
  row.controls.emplace_back(pickStatus(pick, wording));
  return row;
}

ui::Section extensions(SettingsModel& model, const Wording& wording) {
  ui::Section section{"Browser extensions", {}};
  section.elements.emplace_back(
      callout("Add the free extension to each browser you use, so Tollvane can name the exact tab that made a sound."));
  const auto& picks = *model.picks;
  for (const ExtensionPick& pick : picks) section.elements.emplace_back(pickRow(model, pick, wording));
  if (std::all_of(picks.begin(), picks.end(), [](const ExtensionPick& pick) { return pick.connected; })) return section;

  section.elements.emplace_back(caption(model.hasStores()
                                            ? "Each browser opens its store page. Click Add there to finish."
                                            : "A page opens that tells how to add the extension to each browser."));
  const bool anySelected = std::any_of(picks.begin(), picks.end(), [&](const ExtensionPick& pick) {
    return !pick.connected && model.ticked->contains(std::string(pick.id()));
  });
  section.elements.emplace_back(
      ui::Button{"addSelected", "Add selected", anySelected, [&model] { model.addSelected(); }});
  return section;
}

ui::Row browserRow(const SettingsModel& model, const BrowserRow& browser) {
  ui::Row row{browser.id, {browser.ok ? ui::Dot{TextColor::green} : ui::Dot{TextColor::secondaryLabel, 0.4}}};
  addIcon(row, model);
  row.controls.emplace_back(ui::Text{browser.name});
  row.controls.emplace_back(callout(browser.status));
  return row;
}

ui::Section otherBrowsers(SettingsModel& model, const Wording& wording) {
  ui::Section section{"Other browsers", {}};
  if (model.browsers->empty()) {
    section.elements.emplace_back(
        ui::Text{std::string(wording.noOtherBrowsers), TextStyle::body, TextColor::secondaryLabel});
  }
  for (const BrowserRow& browser : *model.browsers) section.elements.emplace_back(browserRow(model, browser));
  section.elements.emplace_back(
      caption("Browser sounds are always listed. The extension adds which tab made them and lets you jump to it. "
              "Brave and Arc use the Chrome extension."));
  section.elements.emplace_back(switchFor("suggestExtension", "Suggest the extension under browser sounds",
                                          *model.suggestExtension,
                                          [&model](bool on) { model.setSuggestExtension(on); }));
  section.elements.emplace_back(
      caption("When a browser without the extension makes a sound, the list shows a link to add it."));
  return section;
}

}  // namespace

ui::SettingsContent SettingsView::body(const Wording& wording) const {
  ui::SettingsContent content;
  content.icon = {"bell.fill", TextColor::controlAccent, 28, FontWeight::semibold};
  content.introduction = {
      {welcome ? "Welcome to Tollvane" : "Tollvane", TextStyle::title, TextColor::label, FontWeight::semibold},
      callout(wording.introduction),
  };
  if (welcome) content.introduction.push_back(caption(wording.dontSeeTheBell));
  content.sections = {general(model), extensions(model, wording), otherBrowsers(model, wording)};
  content.footer = caption("Version " + version + std::string(wording.everythingStaysHere));
  return content;
}

}  // namespace tollvane
