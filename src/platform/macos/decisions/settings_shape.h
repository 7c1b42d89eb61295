// What of the settings window's content needs views of its own, and what only changes them. Pure; any thread.
#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/settings_window.h"

namespace tollvane {

inline ui::Text sectionTitle(const ui::Section& section) {
  return {section.title, ui::TextStyle::body, TextColor::label, FontWeight::semibold};
}

// All controls of the content in the order in which they stand there.
inline std::vector<ui::Control> controlsOf(const ui::SettingsContent& content) {
  std::vector<ui::Control> controls = {content.icon};
  controls.insert(controls.end(), content.introduction.begin(), content.introduction.end());
  for (const ui::Section& section : content.sections) {
    controls.emplace_back(sectionTitle(section));
    for (const ui::Element& element : section.elements) {
      if (const auto* row = std::get_if<ui::Row>(&element)) {
        controls.insert(controls.end(), row->controls.begin(), row->controls.end());
      } else if (const auto* text = std::get_if<ui::Text>(&element)) {
        controls.emplace_back(*text);
      } else if (const auto* toggle = std::get_if<ui::Toggle>(&element)) {
        controls.emplace_back(*toggle);
      } else {
        controls.emplace_back(std::get<ui::Button>(element));
      }
    }
  }
  controls.emplace_back(content.footer);
  return controls;
}

// Two contents of one shape are drawn by the same views, which take the new values. Equal only if sections, rows, kinds
// of controls and their identifiers are.
inline std::string shapeOf(const ui::SettingsContent& content) {
  std::string shape = std::to_string(content.introduction.size());
  const auto add = [&shape](const auto& control) {
    using Kind = std::decay_t<decltype(control)>;
    if constexpr (std::is_same_v<Kind, ui::Toggle>) {
      shape += (control.style == ui::Toggle::Style::checkBox ? " box " : " switch ") + control.identifier;
    } else if constexpr (std::is_same_v<Kind, ui::Button>) {
      shape += " button " + control.identifier;
    } else if constexpr (std::is_same_v<Kind, ui::Text>) {
      shape += " text";
    } else if constexpr (std::is_same_v<Kind, ui::Image>) {
      shape += " image";
    } else if constexpr (std::is_same_v<Kind, ui::ApplicationIcon>) {
      shape += " icon";
    } else if constexpr (std::is_same_v<Kind, ui::Dot>) {
      shape += " dot";
    }
  };
  for (const ui::Section& section : content.sections) {
    shape += "\nsection";
    for (const ui::Element& element : section.elements) {
      shape += '\n';
      if (const auto* row = std::get_if<ui::Row>(&element)) {
        shape += "row " + row->identifier;
        for (const ui::Control& control : row->controls) std::visit(add, control);
      } else {
        std::visit(add, element);
      }
    }
  }
  return shape;
}

}  // namespace tollvane
