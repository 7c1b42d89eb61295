// The drawings behind the symbol names that the core uses. Main thread only; needs a QGuiApplication.
//
// Every drawing goes to the bar twice: as a name in our own icon theme, which good bars recolour like their own
// symbols, and as pixels for the other bars.
#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <string_view>

namespace tollvane {

// The background on which pixels must be visible.
enum class BarTone {
  dark,   // needs a light drawing
  light,  // needs a dark drawing
};

// The name of the symbol's drawing in the icon theme; empty if the symbol has none.
QString iconNameForSymbol(std::string_view symbolName);

// The drawing of that name, in every size that a bar may want. Empty if the name is empty or unknown.
QList<QImage> drawIcon(const QString& iconName, BarTone tone);

// The symbol in the colour `ink`, `pixels` wide and high. Null if the symbol has no drawing.
QImage drawSymbol(std::string_view symbolName, int pixels, const QColor& ink);

}  // namespace tollvane
