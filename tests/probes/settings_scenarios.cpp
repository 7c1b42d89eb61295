#include "tests/probes/settings_scenarios.h"

#include <algorithm>
#include <stdexcept>

#include "platform/linux/linux_wording.h"
#include "settings/settings_view.h"

namespace tollvane::test {
namespace {

// Makes the text as long as its longest translations may become.
void lengthen(std::string& text) {
  if (text.size() > 10) text += ", " + text.substr(0, text.size() / 2);
}

void lengthen(ui::SettingsContent& content) {
  for (ui::Text& text : content.introduction) lengthen(text.text);
  for (ui::Section& section : content.sections) {
    for (ui::Element& element : section.elements) {
      if (auto* text = std::get_if<ui::Text>(&element)) lengthen(text->text);
      if (auto* toggle = std::get_if<ui::Toggle>(&element)) lengthen(toggle->title);
      if (auto* button = std::get_if<ui::Button>(&element)) lengthen(button->title);
      if (auto* row = std::get_if<ui::Row>(&element); row && !row->controls.empty()) {
        if (auto* status = std::get_if<ui::Text>(&row->controls.back())) lengthen(status->text);
      }
    }
  }
  lengthen(content.footer.text);
}

}  // namespace

const std::vector<std::string>& SettingsScenario::names() {
  static const std::vector<std::string> all{"welcome", "partly", "connected", "none", "note", "browsers", "translated"};
  return all;
}

SettingsScenario::SettingsScenario(const std::string& name)
    : model_(system_.workspace, system_.bundle, system_.queue, linuxWording, Prefs(system_.defaults), loginItem_),
      welcome_(name == "welcome" || name == "translated"),
      translated_(name == "translated") {
  if (std::find(names().begin(), names().end(), name) == names().end()) throw std::invalid_argument(name);
  if (name != "none") {
    system_.workspace.installed["com.google.Chrome"] = "/usr/share/applications/google-chrome.desktop";
    system_.workspace.installed["org.mozilla.firefox"] = "/usr/share/applications/firefox.desktop";
  }
  if (name == "connected") model_.isConnected = [](Browser) { return true; };
  if (name == "partly" || name == "browsers" || translated_)
    model_.isConnected = [](Browser browser) { return browser == Browser::firefox; };
  if (name == "browsers" || translated_) {
    model_.browserStatus = [] {
      return std::vector<BrowserRow>{{"brave", "Brave Browser", "Connected", true},
                                     {"chromium", "Chromium", "Extension not connected", false}};
    };
  }
  if (name == "note") {
    system_.login.refusal = "Permission denied";
    model_.setStartAtLogin(true);
  }
  if (name == "connected") system_.login.state = LoginStatus::enabled;
  model_.refresh();
}

ui::SettingsContent SettingsScenario::content() {
  ui::SettingsContent content = SettingsView{model_, welcome_, "1.0", nullptr}.body(linuxWording);
  if (translated_) lengthen(content);
  return content;
}

}  // namespace tollvane::test
