#include "platform/linux/menu/menu_colors.h"

#include <vector>

#include "platform/linux/drawing/contrast.h"

namespace tollvane {

MenuColors::MenuColors(const QPalette& palette) {
  // Always the active group: a menu on some desktops never becomes the active window.
  const auto color = [&palette](QPalette::ColorRole role) { return palette.color(QPalette::Active, role).toRgb(); };
  // Some styles draw menus on the one, some on the other.
  const std::vector<QColor> behind{color(QPalette::Window), color(QPalette::Base)};
  label_ = readable(color(QPalette::WindowText), behind, readableContrast);
  secondary_ = readable(blend(label_, behind.front(), 0.70), behind, readableContrast);
  tertiary_ = readable(blend(label_, behind.front(), 0.45), behind, visibleContrast);
  accent_ = readable(color(QPalette::Highlight), behind, readableContrast);
  selected_ = readable(color(QPalette::HighlightedText), {color(QPalette::Highlight)}, visibleContrast);
}

QColor MenuColors::of(TextColor role) const {
  switch (role) {
    case TextColor::secondaryLabel:
      return secondary_;
    case TextColor::tertiaryLabel:
      return tertiary_;
    case TextColor::controlAccent:
      return accent_;
    default:
      return label_;
  }
}

}  // namespace tollvane
