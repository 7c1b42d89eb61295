// Reads arbitrary bytes as the update feed, and as versions. Only web pages may come out of it, and versions must be in
// one order.

#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/fuzz.h"
#include "support/text.h"
#include "update/release.h"

namespace tollvane {
namespace {

constexpr const char* downloadPage = "https://www.example.org/download";

void checkFeed(std::string_view body) {
  const auto release = releaseFromFeed(body, downloadPage);
  FUZZ_REQUIRE(release == releaseFromFeed(body, downloadPage));
  if (!release) return;
  FUZZ_REQUIRE(text::isWebPage(release->url));
  FUZZ_REQUIRE(compareVersions(release->version, release->version) == 0);
}

void checkOrder(std::string_view a, std::string_view b, std::string_view c) {
  const auto order = compareVersions(a, b);
  FUZZ_REQUIRE(compareVersions(b, a) == 0 <=> order);
  if (order <= 0 && compareVersions(b, c) <= 0) FUZZ_REQUIRE(compareVersions(a, c) <= 0);
  FUZZ_REQUIRE(compareVersions(a, std::string(a) + ".0") == 0);
}

}  // namespace
}  // namespace tollvane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  tollvane::checkFeed(input);
  const auto third = size / 3;
  tollvane::checkOrder(input.substr(0, third), input.substr(third, third), input.substr(2 * third));
  return 0;
}
