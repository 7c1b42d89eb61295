// Text from outside, made safe to be drawn. Pure functions; callable from any thread.
//
// Hosts disagree about a tooltip: some show it as it is, some read it as Pango markup, where a bare "&" even empties
// it. The only text that reads the same in both holds no markup character at all.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace tollvane {

// UTF-8 as a line of a bar or a menu: without control characters (see text::withoutControls), and of more than 300
// user-perceived characters only the first, with an ellipsis.
QString plainLine(std::string_view text);

// The same as it goes into the tooltip of a status item, UTF-8.
//   < > &                     -> U+2039 U+203A U+FF06, which look alike and mean nothing to a parser
std::string plainToolTip(std::string_view text);

// The same as an alert draws it: a text of more than `most` user-perceived characters loses some in the middle, for an
// ellipsis, so that a sentence keeps its end.
QString alertText(std::string_view text, qsizetype most);

// The same with places, which take no room, where a line may end inside a word that is too long for any line.
QString breakable(const QString& line);

}  // namespace tollvane
