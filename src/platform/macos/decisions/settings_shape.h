// What of the settings window's content needs views of its own, and what only changes them. Pure; any thread.
#pragma once

#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "platform/settings_window.h"

namespace tollvane {

inline ui::Text sectionTitle(const ui::Section& section) {
  return {section.title, ui::TextStyle::body, TextColor::label, FontWeight::semibold};
}

inline std::vector<ui::Control> controlsOf(const ui::Element& element) {
  return std::visit(
      [](const auto& each) {
        if constexpr (std::is_same_v<decltype(each), const ui::Row&>) {
          return each.controls;
        } else {
          return std::vector<ui::Control>{each};
        }
      },
      element);
}

// All controls of the content in the order in which they stand there.
inline std::vector<ui::Control> controlsOf(const ui::SettingsContent& content) {
  std::vector<ui::Control> controls = {content.icon};
  const auto add = [&controls](const auto& more) { controls.insert(controls.end(), more.begin(), more.end()); };
  add(content.introduction);
  for (const ui::Section& section : content.sections) {
    controls.emplace_back(sectionTitle(section));
    for (const ui::Element& element : section.elements) add(controlsOf(element));
  }
  controls.emplace_back(content.footer);
  return controls;
}

// The kind of a control, and which one it is.
inline std::string nameOf(const ui::Control& control) {
  std::string name = " " + std::to_string(control.index()) + " ";
  if (const auto* button = std::get_if<ui::Button>(&control)) name += button->identifier;
  if (const auto* toggle = std::get_if<ui::Toggle>(&control))
    name += (toggle->style == ui::Toggle::Style::checkBox ? "box " : "switch ") + toggle->identifier;
  return name;
}

// Two contents of one shape are drawn by the same views, which take the new values. Equal only if sections, rows, kinds
// of controls and their identifiers are.
inline std::string shapeOf(const ui::SettingsContent& content) {
  std::string shape = std::to_string(content.introduction.size());
  for (const ui::Section& section : content.sections) {
    shape += "\n" + section.title;
    for (const ui::Element& element : section.elements) {
      const auto* row = std::get_if<ui::Row>(&element);
      shape += row == nullptr ? "\n" : "\nrow " + row->identifier;
      for (const ui::Control& control : controlsOf(element)) shape += nameOf(control);
    }
  }
  return shape;
}

}  // namespace tollvane
