#include "platform/linux/menu/menu_colors.h"

#include <algorithm>
#include <cmath>

namespace tollvane {
namespace {

double linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

QColor extremeAgainst(const QColor& background) {
  return contrast(Qt::white, background) > contrast(Qt::black, background) ? Qt::white : Qt::black;
}

}  // namespace

double contrast(const QColor& one, const QColor& other) {
  const auto [low, high] = std::minmax({luminance(one), luminance(other)});
  return (high + 0.05) / (low + 0.05);
}

QColor blend(const QColor& over, const QColor& under, double share) {
  const auto mix = [share](float one, float other) { return static_cast<float>(one * share + other * (1 - share)); };
  return QColor::fromRgbF(mix(over.redF(), under.redF()), mix(over.greenF(), under.greenF()),
                          mix(over.blueF(), under.blueF()));
}

QColor readable(const QColor& color, const std::vector<QColor>& backgrounds, double least) {
  const QColor extreme = extremeAgainst(backgrounds.front());
  for (int percent = 100; percent > 0; percent -= 4) {
    const QColor candidate = blend(color, extreme, percent / 100.0);
    const auto standsOut = [&](const QColor& background) { return contrast(candidate, background) >= least; };
    if (std::all_of(backgrounds.begin(), backgrounds.end(), standsOut)) return candidate;
  }
  return extreme;
}

MenuColors::MenuColors(const QPalette& palette) {
  // Always the active group: a menu on some desktops never becomes the active window.
  const auto color = [&palette](QPalette::ColorRole role) { return palette.color(QPalette::Active, role).toRgb(); };
  // Some styles draw menus on the one, some on the other.
  const std::vector<QColor> behind{color(QPalette::Window), color(QPalette::Base)};
  label_ = readable(color(QPalette::WindowText), behind, kReadable);
  secondary_ = readable(blend(label_, behind.front(), 0.70), behind, kReadable);
  tertiary_ = readable(blend(label_, behind.front(), 0.45), behind, kFaded);
  accent_ = readable(color(QPalette::Highlight), behind, kReadable);
  selected_ = readable(color(QPalette::HighlightedText), {color(QPalette::Highlight)}, kFaded);
}

QColor MenuColors::of(TextColor role) const {
  switch (role) {
    case TextColor::secondaryLabel:
      return secondary_;
    case TextColor::tertiaryLabel:
      return tertiary_;
    case TextColor::controlAccent:
      return accent_;
    case TextColor::unset:
    case TextColor::label:
      break;
  }
  return label_;
}

}  // namespace tollvane
