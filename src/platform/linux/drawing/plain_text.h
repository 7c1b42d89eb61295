// Makes text from outside safe to be drawn. Pure functions; callable from any thread.
//
// Hosts disagree about tooltips: some show the text as it is, some read it as Pango markup, in which a bare "&" even
// empties the tooltip. Only a text without any markup character reads the same in both.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace tollvane {

inline constexpr QChar ellipsis = u'\u2026';

// UTF-8 as one line of a bar or a menu, without control characters (see text::withoutControls). If the text has more
// than 300 user-perceived characters, only the first are kept, with an ellipsis.
QString plainLine(std::string_view text);

// UTF-8 as one line without control characters. If the text has more than `most` user-perceived characters, an ellipsis
// replaces some in the middle, so that a sentence keeps its end.
QString shortenedInside(std::string_view text, qsizetype most);

// The same for the tooltip of a status item, in UTF-8, with 160 characters at most: a long name loses its middle, and
// what is said after it stays.
//   < > &                     -> U+2039 U+203A U+FF06, which look alike and mean nothing to a parser
std::string plainToolTip(std::string_view text);

inline constexpr QChar zeroWidthSpace = u'\u200B';

// `line` with zero-width spaces in words that are too long for any line, so that a line can end there.
QString breakable(const QString& line);

}  // namespace tollvane
