// Reading members of a JSON object that came from outside: the value in the type that is wanted, or nothing.
// Any thread; nothing here throws.
#pragma once

#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace tollvane::json {

inline const nlohmann::json* member(const nlohmann::json& object, std::string_view key) {
  if (!object.is_object()) return nullptr;
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &*found;
}

inline std::optional<std::string> text(const nlohmann::json& object, std::string_view key) {
  const auto* value = member(object, key);
  return value && value->is_string() ? std::optional(value->get<std::string>()) : std::nullopt;
}

// A whole number that fits: 7 and 7.0 are, 1.5, 1e300, "7" and true are not.
inline std::optional<std::int64_t> wholeNumber(const nlohmann::json& object, std::string_view key) {
  const auto* value = member(object, key);
  if (!value || !value->is_number()) return std::nullopt;
  if (value->is_number_unsigned()) {
    const auto number = value->get<std::uint64_t>();
    return number <= INT64_MAX ? std::optional(static_cast<std::int64_t>(number)) : std::nullopt;
  }
  if (value->is_number_integer()) return value->get<std::int64_t>();
  const auto number = value->get<double>();
  constexpr double exact = 9007199254740992.0;  // 2^53: beyond it a double is no longer one certain whole number
  if (std::trunc(number) != number || std::abs(number) > exact) return std::nullopt;
  return static_cast<std::int64_t>(number);
}

}  // namespace tollvane::json
