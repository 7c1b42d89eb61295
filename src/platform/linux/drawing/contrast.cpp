#include "platform/linux/drawing/contrast.h"

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

}  // namespace tollvane
