// The drawings of our own symbols, read without the toolkit's library for SVG, which would cost more memory than all of
// them. Pure functions; callable from any thread.
#pragma once

#include <QByteArray>
#include <QPainterPath>
#include <QStringView>

namespace tollvane {

// The width and height of each drawing.
inline constexpr int symbolSize = 16;

// All paths of a drawing in SVG, together. Of their attributes only "d" is read, and areas that overlap an odd number
// of times are filled.
QPainterPath symbolPath(const QByteArray& svg);

// Path data with the commands M, L, H, V, C, A (of circles) and Z, each with its letter. What follows a mistake is left
// out.
// Source: "Paths" in the W3C's Scalable Vector Graphics 2.
QPainterPath pathOfData(QStringView data);

}  // namespace tollvane
