// A menu as a value: a tree of items that the platform draws in the manner of the user's desktop.
//
// A title is either plain, or a sequence of runs whose fonts and colours are roles that the platform fills in. All
// texts are plain text in UTF-8, whatever characters they hold: no markup, no mnemonics. Main thread only.
#pragma once

#include <any>
#include <functional>
#include <string>
#include <vector>

#include "platform/text_style.h"

namespace tollvane {

// Sizes are of a system whose menus are written in `menuFontSize`; a platform whose menus are larger scales with them.
inline constexpr double menuFontSize = 13;

struct Font {
  FontFamily family = FontFamily::system;
  double size = menuFontSize;
  FontWeight weight = FontWeight::regular;

  bool operator==(const Font&) const = default;
};

struct TextRun {
  std::string text;  // a run of a line feed and blanks only begins a second line; elsewhere a line feed is a blank
  Font font;
  TextColor color = TextColor::unset;

  bool operator==(const TextRun&) const = default;
};

using AttributedText = std::vector<TextRun>;

// Its characters alone.
inline std::string plainText(const AttributedText& text) {
  std::string plain;
  for (const TextRun& run : text) plain += run.text;
  return plain;
}

struct MenuItem {
  using Action = std::function<void(const MenuItem& sender)>;

  // Names the item among those of its menu and of its submenus, and stays with it when the menu is made anew.
  std::string identifier;

  std::string title;
  AttributedText attributedTitle;  // instead of the title, unless empty
  std::string toolTip;
  std::string keyEquivalent;  // one lower-case character, together with the platform's modifier for commands; or none
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

  // The menu is about to open: makes its items anew.
  virtual void menuNeedsUpdate(Menu& menu) = 0;
};

}  // namespace tollvane
