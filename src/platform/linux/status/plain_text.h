// Text from outside, made safe for the status bar. Pure functions; callable from any thread.
//
// Hosts disagree about a tooltip: some show it as it is, some read it as Pango markup, where a bare "&" even empties
// it. The only text that reads the same in both holds no markup character at all.
#pragma once

#include <string>
#include <string_view>

namespace tollvane {

// The text as it goes into the tooltip of a status item. UTF-8 in and out; what is not UTF-8 becomes U+FFFD.
//   < > &                     -> U+2039 U+203A U+FF06, which look alike and mean nothing to a parser
//   control characters, U+2028 U+2029 -> one blank each
//   bidirectional controls    -> dropped, so that no title can turn the rest of the line around
//   more than 300 user-perceived characters (or 2,400 UTF-16 units) -> cut at a character, with an ellipsis
std::string plainToolTip(std::string_view text);

}  // namespace tollvane
