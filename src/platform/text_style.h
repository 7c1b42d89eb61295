// The words in which the core says what a text looks like, in the menu and in the settings window. They are roles,
// which the platform fills with the fonts and colours of the user's desktop.
#pragma once

namespace tollvane {

enum class FontFamily {
  system,
  monospacedDigits,  // digits are all equally wide
};

enum class FontWeight { regular, medium, semibold };

enum class TextColor {
  unset,           // as the desktop writes such a text
  label,           // what is read first
  secondaryLabel,  // what goes with it
  tertiaryLabel,   // what has been seen already
  controlAccent,   // the user's accent colour
  green,           // all is well
  orange,          // the user should look at this
};

}  // namespace tollvane
