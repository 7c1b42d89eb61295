// Text as a person perceives it. All texts are UTF-8; a byte that is not is one character of its own. Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tollvane::text {

// `text` without white space and line breaks (Unicode's White_Space) at both ends.
std::string_view trimmed(std::string_view text);

// The first `characters` user-perceived characters (extended grapheme clusters, UAX #29); all of a shorter text. A
// flag, a family or a letter with its accents is one character. Looks no further than it has to.
std::string_view prefix(std::string_view text, std::size_t characters);

// Control characters (C0, DEL, C1) and the separators U+2028 and U+2029, which some readers take for the end of a line.
constexpr bool isControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x2028 || c == 0x2029; }

// Characters that only turn the direction of the text around them.
constexpr bool isBidiControl(char32_t c) {
  return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

// `text` on one line, and in one direction: each control character becomes a blank, bidirectional controls are dropped.
// Valid UTF-8: what is not becomes U+FFFD.
std::string withoutControls(std::string_view text);

// Whether it is the address of a page on the web, http or https. Tollvane opens no others: they start programs.
bool isWebPage(std::string_view url);

}  // namespace tollvane::text
