// JSON that came from outside: read without exceptions, and each member in the type that is wanted, or not at all.
// Any thread. Who makes values of its own includes support/json_value.h as well.
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace tollvane::json {

inline constexpr std::size_t deepest = 64;  // levels of objects and lists in each other

// The object that `text` holds; absent if it holds something else or no JSON at all, or if its values nest more than
// `deepest` levels.
std::optional<nlohmann::json> object(std::string_view text);

// On one line, or indented by two blanks a level. Sorted keys. What is not UTF-8 becomes U+FFFD.
std::string compact(const nlohmann::json& value);
std::string pretty(const nlohmann::json& value);

std::optional<std::string> text(const nlohmann::json& object, std::string_view key);

// Whether the member is the truth value true.
bool isTrue(const nlohmann::json& object, std::string_view key);

// A whole number that fits: 7 and 7.0 are, 1.5, 1e300, "7" and true are not.
std::optional<std::int64_t> wholeNumber(const nlohmann::json& object, std::string_view key);

}  // namespace tollvane::json
