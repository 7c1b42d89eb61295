// TollvaneLog's command line as values. Pure; any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace tollvane::soundlog {

struct Stream {
  enum class Style { readable, ndjson };
  Style style = Style::readable;
};
struct Help {};
struct Version {};
struct Mistake {
  std::string sentence;  // for standard error, without a line feed
};

using Arguments = std::variant<Stream, Help, Version, Mistake>;

// `arguments`: without the program's own name.
Arguments parseArguments(std::span<const char* const> arguments);

// What --help prints.
std::string_view usage();

}  // namespace tollvane::soundlog
