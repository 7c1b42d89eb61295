// Feeds the watcher arbitrary bytes as the log tool's output. However they are cut into pieces, the same sounds must be
// heard, and the quick check of a line must agree with the full parse.

#include <cstdint>
#include <string>
#include <vector>

#include "detect/watcher.h"
#include "fuzz/fuzz.h"
#include "support/json.h"
#include "support/json_value.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

std::vector<std::string> heard(std::initializer_list<std::string_view> reads) {
  test::VirtualPlatform system;
  const Resolver resolver(system.processes, system.workspace, system.locations, system.files);
  Watcher watcher(system.queue, system.clock, system.children, system.bundle, resolver);
  std::vector<std::string> result;
  watcher.onEvent = [&](const std::shared_ptr<SoundEvent>& event) { result.push_back(event->app + "|" + event->kind); };
  watcher.start();
  for (const auto read : reads) system.children.last().print(read);
  return result;
}

// Tries every split of a short input, and a hundred splits of a long one.
void checkSplits(std::string_view input) {
  const auto whole = heard({input});
  const std::size_t step = 1 + input.size() / 100;
  for (std::size_t at = 0; at <= input.size(); at += step)
    FUZZ_REQUIRE(heard({input.substr(0, at), input.substr(at)}) == whole);
}

void checkLine(std::string_view text) {
  std::string line(text);
  line.reserve(text.size() + LineBuffer::padding);
  LogLineReader reader;
  const auto read = reader.read(line);
  if (!read) return;
  const auto object = json::object(line);
  FUZZ_REQUIRE(object);
  FUZZ_REQUIRE(json::text(*object, "eventMessage") == read->message);
  if (soundMessage(read->process, read->message)) FUZZ_REQUIRE(mayHoldSoundMessage(line));
}

}  // namespace
}  // namespace tollvane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  tollvane::checkSplits(input);
  for (std::size_t begin = 0; begin <= input.size();) {
    const std::size_t end = std::min(input.find('\n', begin), input.size());
    tollvane::checkLine(input.substr(begin, end - begin));
    begin = end + 1;
  }
  return 0;
}
