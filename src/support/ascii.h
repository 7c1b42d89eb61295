// Texts that machines write for machines: paths, identifiers, lists, numbers. Only ASCII letters and digits count as
// such, whatever the user's language is. Any thread.
#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace tollvane::ascii {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
std::string lowerCase(std::string_view text);

bool equalIgnoringCase(std::string_view one, std::string_view other);
bool startsWithIgnoringCase(std::string_view text, std::string_view beginning);

// The number that the whole text is; absent when it is empty, has anything else in it, or does not fit.
template <typename Number>
std::optional<Number> number(std::string_view text, int base = 10) {
  Number value{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, base);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

// Takes the first part of a list: returns what stands before the first `separator` of `rest`, and leaves in `rest` what
// stands behind it. The last part leaves nothing.
//
//   for (std::string_view rest = "/usr/bin:/bin"; !rest.empty();) look(takePart(rest, ':'));
constexpr std::string_view takePart(std::string_view& rest, char separator) {
  const std::string_view part = rest.substr(0, rest.find(separator));
  rest.remove_prefix(part.size() < rest.size() ? part.size() + 1 : rest.size());
  return part;
}

}  // namespace tollvane::ascii
