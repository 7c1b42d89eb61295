// Fonts as GTK's desktops write them. Pure; needs a QGuiApplication.
// Source: Pango, pango_font_description_from_string ("Noto Sans Semi-Bold Italic 11").
#pragma once

#include <QFont>
#include <optional>
#include <string_view>

namespace tollvane {

// Absent if the text names no family or no size, or a size that nobody could read (below 4 points, or above 100).
// "11px" is a size in pixels.
std::optional<QFont> fontFromDescription(std::string_view description);

}  // namespace tollvane
