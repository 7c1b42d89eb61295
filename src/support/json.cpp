#include "support/json.h"

#include <cmath>

#include "support/json_value.h"

namespace tollvane::json {
namespace {

constexpr auto replace = nlohmann::json::error_handler_t::replace;

const nlohmann::json* member(const nlohmann::json& object, std::string_view key) {
  if (!object.is_object()) return nullptr;
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &*found;
}

// Values that nest without end would take a hundred times the text's memory.
bool isTooDeep(std::string_view text) {
  std::size_t depth = 0;
  bool inText = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inText && c == '\\') {
      ++i;
    } else if (c == '"') {
      inText = !inText;
    } else if (!inText && (c == '[' || c == '{')) {
      if (++depth > deepest) return true;
    } else if (!inText && (c == ']' || c == '}') && depth > 0) {
      --depth;
    }
  }
  return false;
}

}  // namespace

std::optional<nlohmann::json> object(std::string_view text) {
  if (isTooDeep(text)) return std::nullopt;
  auto value = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
  return value.is_object() ? std::optional(std::move(value)) : std::nullopt;
}

std::string compact(const nlohmann::json& value) { return value.dump(-1, ' ', false, replace); }
std::string pretty(const nlohmann::json& value) { return value.dump(2, ' ', false, replace); }

std::optional<std::string> text(const nlohmann::json& object, std::string_view key) {
  const auto* value = member(object, key);
  return value && value->is_string() ? std::optional(value->get<std::string>()) : std::nullopt;
}

bool isTrue(const nlohmann::json& object, std::string_view key) {
  const auto* value = member(object, key);
  return value && value->is_boolean() && value->get<bool>();
}

std::optional<std::int64_t> wholeNumber(const nlohmann::json& object, std::string_view key) {
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
