// Colours that can be told apart. Opaque colours only. Pure; callable from any thread.
// Source: W3C, Web Content Accessibility Guidelines 2.1 (contrast ratio, relative luminance).
#pragma once

#include <QColor>
#include <vector>

namespace tollvane {

// What text needs, and what lines, shapes and texts that say nothing new need.
inline constexpr double readableContrast = 4.5;
inline constexpr double visibleContrast = 3.0;

// The contrast ratio of two colours, 1 to 21.
double contrast(const QColor& one, const QColor& other);

// `share` (0 to 1) of the one colour over the other.
QColor blend(const QColor& over, const QColor& under, double share);

// `color` if its contrast with every background is at least `least`; else its nearest blend towards black or white that
// is.
QColor readable(const QColor& color, const std::vector<QColor>& backgrounds, double least);

}  // namespace tollvane
