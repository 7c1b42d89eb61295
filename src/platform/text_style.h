// How the core describes the look of a text in the menu and in the settings window: by roles, which the platform fills
// with the fonts and colours of the user's desktop.
#pragma once

namespace tollvane {

enum class FontFamily {
  system,
  monospacedDigits,  // all digits are equally wide
};

enum class FontWeight { regular, medium, semibold };

enum class TextColor {
  unset,           // the desktop's usual colour of such a text
  label,           // what is read first
  secondaryLabel,  // what explains it
  tertiaryLabel,   // what the user has seen already
  controlAccent,   // the user's accent colour
  green,           // all is well
  orange,          // the user should look at this
};

}  // namespace tollvane
