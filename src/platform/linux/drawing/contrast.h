// The contrast of colours. Opaque colours only. Pure; callable from any thread.
// Source: W3C, Web Content Accessibility Guidelines 2.1 (contrast ratio, relative luminance).
#pragma once

#include <QColor>
#include <vector>

namespace tollvane {

// The least contrast for text, and for lines, shapes and texts that tell nothing new.
inline constexpr double readableContrast = 4.5;
inline constexpr double visibleContrast = 3.0;

// The contrast ratio of two colours, 1 to 21.
double contrast(const QColor& one, const QColor& other);

// Mixes `share` (0 to 1) of `over` with the rest of `under`.
QColor blend(const QColor& over, const QColor& under, double share);

// `color` if its contrast with every background is at least `least`; else its nearest blend towards black or white that
// has this contrast.
QColor readable(const QColor& color, const std::vector<QColor>& backgrounds, double least);

}  // namespace tollvane
