// Feeds the socket of the browser link arbitrary bytes, in writes of any size. It must handle every line that is a JSON
// object, in order, and nothing else, and it must not stop working.

#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "browser/bridge_connection.h"
#include "browser/browser_link.h"
#include "fuzz/fuzz.h"
#include "support/json.h"
#include "support/json_value.h"
#include "tests/virtual/core_parts.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

// The messages that must be handled for this input.
std::vector<std::string> expected(std::string_view input) {
  std::vector<std::string> messages;
  for (auto end = input.find('\n'); end != std::string_view::npos; end = input.find('\n')) {
    if (const auto object = json::object(input.substr(0, end))) messages.push_back(json::compact(*object));
    input.remove_prefix(end + 1);
  }
  return messages;
}

void check(std::string_view input, std::size_t pieceSize) {
  test::VirtualPlatform system;
  const Paths paths(system.locations, system.files);
  BrowserLink link = test::makeLink(system, paths);
  std::array<int, 2> ends{};
  FUZZ_REQUIRE(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0);
  UniqueFd bridge(ends[1]);
  const auto connection = std::make_shared<BridgeConnection>(LocalStream(UniqueFd(ends[0])), system.queue);
  std::vector<std::string> heard;
  bool closed = false;
  connection->onMessage = [&](const Message& message) {
    heard.push_back(json::compact(message));
    link.handle(*connection, message);
  };
  connection->onClosed = [&] { closed = true; };
  connection->startReading();

  std::array<char, 4096> answers;
  for (std::string_view left = input; !left.empty();) {
    const auto piece = left.substr(0, pieceSize);
    FUZZ_REQUIRE(::send(bridge.get(), piece.data(), piece.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(piece.size()));
    left.remove_prefix(piece.size());
    system.queue.drainDescriptors();
    while (::recv(bridge.get(), answers.data(), answers.size(), MSG_DONTWAIT) > 0) {
    }
  }
  FUZZ_REQUIRE(!closed);
  FUZZ_REQUIRE(heard == expected(input));
  bridge.reset();
  system.queue.drainDescriptors();
  FUZZ_REQUIRE(closed);
}

}  // namespace
}  // namespace tollvane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  // The first byte decides the size of the writes. Larger writes would not fit into the socket at once.
  const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
  tollvane::check(input, 1 + data[0] * 16u);
  return 0;
}
