// Text as a person perceives it. All texts are UTF-8; a byte that is none is one character of its own. Any thread.
#pragma once

#include <cstddef>
#include <string_view>

namespace tollvane::text {

// `text` without white space and line breaks (Unicode's White_Space) at both ends.
std::string_view trimmed(std::string_view text);

// The first `characters` user-perceived characters (extended grapheme clusters, UAX #29); all of a shorter text. A
// flag, a family or a letter with its accents is one character. Looks no further than it has to.
std::string_view prefix(std::string_view text, std::size_t characters);

}  // namespace tollvane::text
