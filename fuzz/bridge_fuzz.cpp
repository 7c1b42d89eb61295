// Feeds the bridge arbitrary bytes from both sides. However they are cut into pieces, the same messages must come out,
// each a JSON object in its framing. Another JSON parser checks which texts the bridge takes for messages.

#include <simdjson.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "bridge/message_kind.h"
#include "bridge/relay.h"
#include "fuzz/fuzz.h"

namespace tollvane::bridge {
namespace {

constexpr std::string_view hello = R"({"type":"hello"})";

bool isObject(std::string_view text) {
  simdjson::dom::parser parser;
  simdjson::dom::object object;
  const auto error = parser.parse(simdjson::padded_string(text)).get(object);
  // Parsers differ in the numbers and the depth that they can hold.
  return !error || error == simdjson::NUMBER_ERROR || error == simdjson::DEPTH_ERROR;
}

void checkKind(std::string_view text) {
  const MessageKind kind = kindOf(text);
  if (kind == MessageKind::malformed) return;
  FUZZ_REQUIRE(isObject(text));
  const auto message = nlohmann::json::parse(text);
  FUZZ_REQUIRE((kind == MessageKind::hello) == (message.contains("type") && message["type"] == "hello"));
}

// What the application gets if the browser sends these pieces.
std::string lines(std::initializer_list<std::string_view> pieces) {
  Relay relay("{}");
  relay.connected();
  for (const auto piece : pieces) relay.fromBrowser(piece);
  return std::string(relay.toApplication.waiting());
}

// What the browser gets if the application sends these pieces.
std::string frames(std::initializer_list<std::string_view> pieces) {
  Relay relay("{}");
  relay.connected();
  for (const auto piece : pieces) relay.fromApplication(piece);
  return std::string(relay.toBrowser.waiting());
}

void checkLines(std::string_view lines) {
  while (!lines.empty()) {
    const auto end = lines.find('\n');
    FUZZ_REQUIRE(end != std::string_view::npos);
    FUZZ_REQUIRE(isObject(lines.substr(0, end)));
    lines.remove_prefix(end + 1);
  }
}

void checkFrames(std::string_view frames) {
  while (!frames.empty()) {
    std::uint32_t length = 0;
    FUZZ_REQUIRE(frames.size() >= sizeof length);
    std::memcpy(&length, frames.data(), sizeof length);
    frames.remove_prefix(sizeof length);
    FUZZ_REQUIRE(length <= longestToBrowser && length <= frames.size());
    FUZZ_REQUIRE(isObject(frames.substr(0, length)));
    frames.remove_prefix(length);
  }
}

// Tries every split of a short input, and thirty splits of a long one.
void checkSplits(std::string_view input) {
  const auto wholeLines = lines({input}), wholeFrames = frames({input});
  checkLines(wholeLines);
  checkFrames(wholeFrames);
  const std::size_t step = 1 + input.size() / 30;
  for (std::size_t at = 0; at <= input.size(); at += step) {
    FUZZ_REQUIRE(lines({input.substr(0, at), input.substr(at)}) == wholeLines);
    FUZZ_REQUIRE(frames({input.substr(0, at), input.substr(at)}) == wholeFrames);
  }
}

// One frame with any content becomes at most one line, and the next frame is still read.
void checkOneFrame(std::string_view input) {
  const auto result = lines({frame(input), frame(hello)});
  checkLines(result);
  const bool passes = kindOf(input) != MessageKind::malformed;
  FUZZ_REQUIRE(std::count(result.begin(), result.end(), '\n') == (passes ? 3 : 2));
  FUZZ_REQUIRE(result.ends_with(std::string(hello) + "\n"));
}

}  // namespace
}  // namespace tollvane::bridge

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tollvane::bridge;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  checkKind(input);
  checkSplits(input);
  checkOneFrame(input);
  return 0;
}
