// A menu as a value: a tree of items that the platform draws in the manner of the user's desktop.
//
// A title is either plain, or a sequence of runs whose fonts and colours are roles that the platform fills in. All
// texts are plain text in UTF-8, whatever characters they contain: no markup, no mnemonics. Main thread only.
#pragma once

#include <any>
#include <functional>
#include <string>
#include <vector>

#include "platform/text_style.h"

namespace tollvane {

// Sizes are meant for a system whose menus use `menuFontSize`; a platform with larger menus enlarges them.
inline constexpr double menuFontSize = 13;

struct Font {
  FontFamily family = FontFamily::system;
  double size = menuFontSize;
  FontWeight weight = FontWeight::regular;

  bool operator==(const Font&) const = default;
};

struct TextRun {
  std::string text;  // if only a line feed and blanks, it begins a second line; elsewhere a line feed is a blank
  Font font;
  TextColor color = TextColor::unset;

  bool operator==(const TextRun&) const = default;
};

using AttributedText = std::vector<TextRun>;

// Whether the title goes on in its second line here. A text from outside may contain line feeds, too, but it does not
// consist of blanks only.
inline bool beginsLine(const TextRun& run) {
  return run.text.starts_with('\n') && run.text.find_first_not_of(' ', 1) == std::string::npos;
}

// The text without its fonts and colours.
inline std::string plainText(const AttributedText& text) {
  std::string plain;
  for (const TextRun& run : text) plain += run.text;
  return plain;
}

struct MenuItem {
  using Action = std::function<void(const MenuItem& sender)>;

  // Identifies the item in its menu and all submenus, and stays the same when the menu is made anew.
  std::string identifier;

  std::string title;
  AttributedText attributedTitle;  // shown instead of `title`, unless empty
  std::string toolTip;
  std::string keyEquivalent;  // one lower-case character, pressed with the platform's modifier for commands; or empty
  bool isSeparator = false;
  bool isEnabled = true;
  Action action;               // if empty, choosing the item does nothing
  std::any representedObject;  // what the action is about
  std::vector<MenuItem> submenu;
};

struct Menu {
  std::vector<MenuItem> items;
};

// Fills a menu.
class MenuDelegate {
 public:
  virtual ~MenuDelegate() = default;

  // Called when the menu is about to open: makes its items anew.
  virtual void menuNeedsUpdate(Menu& menu) = 0;
};

}  // namespace tollvane
