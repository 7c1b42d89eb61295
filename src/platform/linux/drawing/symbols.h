// The drawings behind the symbol names that the core uses. Main thread only; needs a QGuiApplication.
//
// Every drawing goes to the bar twice: as a name in our own icon theme, which good bars recolour like their own
// symbols, and as pixels for bars that do not.
#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <string_view>

namespace tollvane {

// The background that pixels have to stand out from.
enum class BarTone {
  dark,   // light drawing
  light,  // dark drawing
};

// The name of the symbol's drawing in the icon theme; empty for a symbol without one.
QString iconNameForSymbol(std::string_view symbolName);

// The drawing of that name, in every size that a bar may want. Empty for an empty or unknown name.
QList<QImage> drawIcon(const QString& iconName, BarTone tone);

// The symbol in one colour, as many pixels wide and high. Null for a symbol without a drawing.
QImage drawSymbol(std::string_view symbolName, int pixels, const QColor& ink);

}  // namespace tollvane
