// Reads arbitrary bytes as the settings of an X11 desktop. What comes out must be a part of what went in.

#include <cstdint>
#include <string_view>

#include "fuzz/fuzz.h"
#include "platform/linux/x11/xsettings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const auto settings = tollvane::parseXSettings(input);
  FUZZ_REQUIRE(input.find(settings.fontName) != std::string_view::npos);
  FUZZ_REQUIRE(input.find(settings.themeName) != std::string_view::npos);
  return 0;
}
