// The fonts and colours that the core names by their roles. Main thread only.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/macos/objective_c.h"
#include "platform/menu.h"
#include "platform/settings_window.h"
#include "platform/text_style.h"

namespace tollvane {

inline NSColor* nsColor(TextColor color) {
  switch (color) {
    case TextColor::secondaryLabel:
      return NSColor.secondaryLabelColor;
    case TextColor::tertiaryLabel:
      return NSColor.tertiaryLabelColor;
    case TextColor::controlAccent:
      return NSColor.controlAccentColor;
    case TextColor::green:
      return NSColor.systemGreenColor;
    case TextColor::orange:
      return NSColor.systemOrangeColor;
    case TextColor::unset:
    case TextColor::label:
      return NSColor.labelColor;
  }
}

inline NSFontWeight nsWeight(FontWeight weight) {
  if (weight == FontWeight::semibold) return NSFontWeightSemibold;
  return weight == FontWeight::medium ? NSFontWeightMedium : NSFontWeightRegular;
}

inline NSFont* nsFont(const Font& font) {
  const NSFontWeight weight = nsWeight(font.weight);
  return font.family == FontFamily::monospacedDigits ? [NSFont monospacedDigitSystemFontOfSize:font.size weight:weight]
                                                     : [NSFont systemFontOfSize:font.size weight:weight];
}

inline NSFont* nsFont(const ui::Text& text) {
  NSFontTextStyle style = NSFontTextStyleBody;
  if (text.style == ui::TextStyle::title) style = NSFontTextStyleTitle1;
  if (text.style == ui::TextStyle::callout) style = NSFontTextStyleCallout;
  if (text.style == ui::TextStyle::caption) style = NSFontTextStyleCaption1;
  NSFont* font = [NSFont preferredFontForTextStyle:style options:@{}];
  if (text.weight == FontWeight::regular) return font;
  return [NSFont systemFontOfSize:font.pointSize weight:nsWeight(text.weight)];
}

// Nil if the system has no symbol of this name. A description is read aloud; nil makes it an ornament.
inline NSImage* symbol(std::string_view name, NSString* description) {
  return [NSImage imageWithSystemSymbolName:nsString(name) accessibilityDescription:description];
}

}  // namespace tollvane
