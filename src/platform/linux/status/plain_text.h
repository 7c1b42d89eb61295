// Text from outside, made safe to be drawn. Pure functions; callable from any thread.
//
// Hosts disagree about a tooltip: some show it as it is, some read it as Pango markup, where a bare "&" even empties
// it. The only text that reads the same in both holds no markup character at all.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace tollvane {

// The text on one line.
//   control characters, U+2028 U+2029 -> one blank each
//   bidirectional controls    -> dropped, so that no title can turn the rest of the line around
QString withoutControls(const QString& text);

// The same of UTF-8, as long as a line of a bar or a menu may be; what is not UTF-8 becomes U+FFFD.
//   more than 300 user-perceived characters (or 2,400 UTF-16 units) -> cut at a character, with an ellipsis
QString plainLine(std::string_view text);

// The same as it goes into the tooltip of a status item, UTF-8.
//   < > &                     -> U+2039 U+203A U+FF06, which look alike and mean nothing to a parser
std::string plainToolTip(std::string_view text);

}  // namespace tollvane
