// Puts arbitrary bytes into Safari's inbox: as one file, and between two good ones. Each file that is a JSON object is
// one message, in order, and every file is removed.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "browser/browser_link.h"
#include "browser/safari_inbox.h"
#include "fuzz/fuzz.h"
#include "support/json.h"
#include "support/json_value.h"
#include "tests/virtual/core_parts.h"
#include "tests/virtual/virtual_platform.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tollvane;
  const std::string input(reinterpret_cast<const char*>(data), size);
  test::VirtualPlatform system;
  const std::filesystem::path folder = "/inbox";
  system.files.createDirectories(folder);
  system.files.contents[folder / "1.json"] = R"({"n":1})";
  system.files.contents[folder / "2.json"] = input;
  system.files.contents[folder / "3.json"] = R"({"n":3})";
  std::vector<std::string> heard;
  SafariInbox inbox(system.queue, system.files);
  inbox.onMessage = [&](const Message& message) { heard.push_back(json::compact(message)); };
  inbox.start(folder);
  std::vector<std::string> expected = {R"({"n":1})", R"({"n":3})"};
  if (const auto object = json::object(input)) expected.insert(expected.begin() + 1, json::compact(*object));
  FUZZ_REQUIRE(heard == expected);
  FUZZ_REQUIRE(system.files.contents.empty());
  return 0;
}
