// The settings window: its content is a value that the platform draws with the controls of the user's desktop.
// All texts are plain text. Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "platform/text_style.h"

namespace tollvane::ui {

enum class TextStyle { title, body, callout, caption };

struct Text {
  std::string text;
  TextStyle style = TextStyle::body;
  TextColor color = TextColor::label;
  FontWeight weight = FontWeight::regular;

  bool operator==(const Text&) const = default;
};

// A symbol from the system's set, as large as text of the same `size`.
struct Image {
  std::string symbolName;
  TextColor color = TextColor::label;
  double size = 13;
  FontWeight weight = FontWeight::regular;

  bool operator==(const Image&) const = default;
};

// The icon of another application, as large as a line of text.
struct ApplicationIcon {
  std::string name;  // as Workspace::icon() gives it; empty: room is left for an icon

  bool operator==(const ApplicationIcon&) const = default;
};

// A small filled circle.
struct Dot {
  TextColor color = TextColor::secondaryLabel;
  double opacity = 1;

  bool operator==(const Dot&) const = default;
};

struct Toggle {
  enum class Style { switchControl, checkBox };

  std::string identifier;  // identifies the control while it is shown
  std::string title;       // shown beside a switch; a check box is only called so
  Style style = Style::switchControl;
  bool isOn = false;
  std::function<void(bool on)> set;  // called with the user's choice; `isOn` changes only with the next content
};

struct Button {
  std::string identifier;
  std::string title;
  bool isEnabled = true;
  std::function<void()> action;
};

using Control = std::variant<Text, Image, ApplicationIcon, Dot, Toggle, Button>;

// Controls side by side, centred vertically. `identifier` identifies the row among its neighbours.
struct Row {
  std::string identifier;
  std::vector<Control> controls;
};

using Element = std::variant<Text, Toggle, Button, Row>;

struct Section {
  std::string title;
  std::vector<Element> elements;  // from top to bottom
};

struct SettingsContent {
  Image icon;                      // at the leading edge of the head
  std::vector<Text> introduction;  // beside the icon, from top to bottom
  std::vector<Section> sections;   // a grouped form
  Text footer;
};

}  // namespace tollvane::ui

namespace tollvane {

class SettingsWindow {
 public:
  struct Style {
    std::string title;
    double width = 520;  // of the content, in points
    double height = 640;
  };

  virtual ~SettingsWindow() = default;

  // Shows new content. Only what differs is touched, so focus and scroll position stay.
  virtual void setContent(const ui::SettingsContent& content) = 0;

  // Shows the window in front of all others, with the keyboard focus. Closing it only hides it.
  virtual void makeKeyAndOrderFront() = 0;
};

class SettingsWindows {
 public:
  virtual ~SettingsWindows() = default;

  // Makes a window in the middle of the screen, which is not shown yet. The user can close and move it, but not resize
  // it.
  virtual std::unique_ptr<SettingsWindow> make(const SettingsWindow::Style& style) = 0;
};

}  // namespace tollvane
