#include "detect/log_line.h"

#include <simdjson.h>

#include <cstdint>
#include <limits>
#include <string>

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

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t skipDigits(std::string_view text, std::size_t at) {
  while (at < text.size() && isDigit(text[at])) ++at;
  return at;
}

// The end of the number that begins at `at`, by the grammar of RFC 8259; `at` itself if none begins there.
std::size_t endOfNumber(std::string_view text, std::size_t at) {
  const auto is = [&](std::size_t where, std::string_view characters) {
    return where < text.size() && characters.find(text[where]) != characters.npos;
  };
  const std::size_t whole = is(at, "-") ? at + 1 : at;
  std::size_t end = is(whole, "0") ? whole + 1 : skipDigits(text, whole);
  if (end == whole) return at;
  if (is(end, ".")) {
    const std::size_t fraction = skipDigits(text, end + 1);
    if (fraction == end + 1) return at;
    end = fraction;
  }
  if (is(end, "eE")) {
    const std::size_t first = is(end + 1, "+-") ? end + 2 : end + 1;
    const std::size_t exponent = skipDigits(text, first);
    if (exponent == first) return at;
    end = exponent;
  }
  return end;
}

// Makes `result` the same as `line` with every number replaced by 0 and blanks: simdjson refuses numbers that fit into
// none of its types, although JSON allows them. Broken JSON stays broken. There are LineBuffer::padding readable bytes
// behind the result. Allocates nothing once `result` has the line's length.
void removeNumbers(std::string_view line, std::string& result) {
  result.reserve(line.size() + LineBuffer::padding);
  result = line;
  bool inText = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (inText && line[i] == '\\') {
      ++i;
    } else if (line[i] == '"') {
      inText = !inText;
    } else if (!inText && (line[i] == '-' || isDigit(line[i]))) {
      const std::size_t end = endOfNumber(line, i);
      if (end == i) break;
      result.replace(i, end - i, end - i, ' ');
      result[i] = '0';
      i = end - 1;
    }
  }
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

// Absent if the object has no message.
std::optional<LogLine> membersOf(const simdjson::dom::object& object, std::vector<Pid>& ancestors) {
  std::optional<std::string_view> path;
  std::optional<std::string_view> message;
  std::string_view maker;
  ancestors.clear();
  for (const auto [key, value] : object) {
    if (key == "eventMessage") message = textOf(value);
    if (key == "processImagePath") path = textOf(value);
    if (key == "makerName") maker = textOf(value).value_or("");
    if (key == "ancestors") readPids(value, ancestors);
  }
  if (!message) return std::nullopt;
  return LogLine{lastPathComponent(path.value_or("")), *message, maker, ancestors};
}

}  // namespace

struct LogLineReader::Parser {
  std::optional<simdjson::dom::object> object(std::string_view line) {
    simdjson::dom::object result;
    auto error = json.parse(line.data(), line.size(), /*realloc_if_needed=*/false).get(result);
    if (error != simdjson::SUCCESS) {
      removeNumbers(line, copy);
      error = json.parse(copy.data(), line.size(), /*realloc_if_needed=*/false).get(result);
    }
    return error == simdjson::SUCCESS ? std::optional(result) : std::nullopt;
  }

  simdjson::dom::parser json;
  std::string copy;  // of a line that could not be read as it was
};

LogLineReader::LogLineReader() : parser_(std::make_unique<Parser>()) {}
LogLineReader::~LogLineReader() = default;

std::optional<LogLine> LogLineReader::read(std::string_view line) {
  if (parser_->json.capacity() > longestUsualLine) parser_ = std::make_unique<Parser>();
  const auto object = parser_->object(line);
  return object ? membersOf(*object, ancestors_) : std::nullopt;
}

}  // namespace tollvane
