#include "detect/log_line.h"

#include <simdjson.h>

#include "support/line_buffer.h"

namespace tollvane {

static_assert(LineBuffer::padding >= simdjson::SIMDJSON_PADDING);

namespace {

namespace ondemand = simdjson::ondemand;

// Parsers keep memory in proportion to the longest line; after one longer than this they start anew.
constexpr std::size_t longestUsualLine = 1 << 20;

enum class Key { processImagePath, eventMessage, other };

// Compares without unescaping where there is nothing to unescape.
simdjson::error_code keyOf(ondemand::field& field, Key& key) {
  const char* const begin = field.key().raw();
  const char* end = begin;
  while (*end != '"' && *end != '\\') ++end;  // an unclosed text does not get this far
  std::string_view name(begin, end - begin);
  if (*end == '\\') {
    if (const auto error = field.unescaped_key().get(name)) return error;
  }
  key = name == "eventMessage" ? Key::eventMessage : name == "processImagePath" ? Key::processImagePath : Key::other;
  return simdjson::SUCCESS;
}

// The text under a key; absent when the value is of another type.
simdjson::error_code textOf(ondemand::value value, std::optional<std::string_view>& text) {
  text.reset();
  ondemand::json_type type;
  if (const auto error = value.type().get(type)) return error;
  if (type != ondemand::json_type::string) return simdjson::SUCCESS;
  std::string_view found;
  if (const auto error = value.get_string().get(found)) return error;
  text = found;
  return simdjson::SUCCESS;
}

std::string_view lastPathComponent(std::string_view path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

struct LogLineReader::Parsers {
  ondemand::parser quick;
  simdjson::dom::parser thorough;

  simdjson::error_code read(std::string_view line, std::optional<LogLine>& result) {
    ondemand::document document;
    ondemand::object object;
    const simdjson::padded_string_view padded(line, line.size() + LineBuffer::padding);
    if (const auto error = quick.iterate(padded).get(document)) return error;
    if (const auto error = document.get_object().get(object)) return error;

    std::optional<std::string_view> path;
    std::optional<std::string_view> message;
    for (auto entry : object) {
      ondemand::field field;
      if (const auto error = std::move(entry).get(field)) return error;
      Key key;
      if (const auto error = keyOf(field, key)) return error;
      if (key == Key::other) continue;
      if (const auto error = textOf(field.value(), key == Key::eventMessage ? message : path)) return error;
    }
    if (message) result = LogLine{lastPathComponent(path.value_or("")), *message};
    return simdjson::SUCCESS;
  }
};

LogLineReader::LogLineReader() : parsers_(std::make_unique<Parsers>()) {}
LogLineReader::~LogLineReader() = default;

std::optional<LogLine> LogLineReader::read(std::string_view line) {
  if (parsers_->quick.capacity() > longestUsualLine) parsers_ = std::make_unique<Parsers>();
  std::optional<LogLine> result;
  if (parsers_->read(line, result) != simdjson::SUCCESS) return std::nullopt;
  return result;
}

bool LogLineReader::isWellFormed(std::string_view line) {
  return parsers_->thorough.parse(line.data(), line.size(), /*realloc_if_needed=*/false).is_object();
}

}  // namespace tollvane
