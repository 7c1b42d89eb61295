#include "detect/log_line.h"

#include <simdjson.h>

#include <cstdint>
#include <limits>

#include "support/line_buffer.h"

namespace tollvane {

static_assert(LineBuffer::padding >= simdjson::SIMDJSON_PADDING);

namespace {

// The memory of a parser grows with the longest line. After a line longer than this, a new parser is made.
constexpr std::size_t longestUsualLine = 1 << 20;

// Far more than count, see Resolver.
constexpr std::size_t mostListed = 64;

std::optional<std::string_view> textOf(simdjson::dom::element value) {
  std::string_view text;
  return value.get(text) == simdjson::SUCCESS ? std::optional(text) : std::nullopt;
}

// Every element that is no process number is left out.
void readPids(simdjson::dom::element value, std::vector<Pid>& pids) {
  pids.clear();
  simdjson::dom::array array;
  if (value.get(array) != simdjson::SUCCESS) return;
  for (const simdjson::dom::element element : array) {
    std::int64_t number = 0;
    if (element.get(number) != simdjson::SUCCESS || number < 1 || number > std::numeric_limits<Pid>::max()) continue;
    if (pids.size() < mostListed) pids.push_back(static_cast<Pid>(number));
  }
}

std::string_view lastPathComponent(std::string_view path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

struct LogLineReader::Parser {
  simdjson::dom::parser json;
};

LogLineReader::LogLineReader() : parser_(std::make_unique<Parser>()) {}
LogLineReader::~LogLineReader() = default;

std::optional<LogLine> LogLineReader::read(std::string_view line) {
  if (parser_->json.capacity() > longestUsualLine) parser_ = std::make_unique<Parser>();
  simdjson::dom::object object;
  if (parser_->json.parse(line.data(), line.size(), /*realloc_if_needed=*/false).get(object) != simdjson::SUCCESS)
    return std::nullopt;
  std::optional<std::string_view> path;
  std::optional<std::string_view> message;
  std::string_view maker;
  ancestors_.clear();
  for (const auto& [key, value] : object) {
    if (key == "eventMessage") message = textOf(value);
    if (key == "processImagePath") path = textOf(value);
    if (key == "makerName") maker = textOf(value).value_or("");
    if (key == "ancestors") readPids(value, ancestors_);
  }
  if (!message) return std::nullopt;
  return LogLine{lastPathComponent(path.value_or("")), *message, maker, ancestors_};
}

}  // namespace tollvane
