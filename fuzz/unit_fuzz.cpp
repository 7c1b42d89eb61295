// Reads arbitrary bytes as the control group of a process. The ids that come out of it are neither empty nor double,
// and never longer than what went in.

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "fuzz/fuzz.h"
#include "platform/linux/kernel/unit_name.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tollvane;
  const UnitName unit = applicationUnit({reinterpret_cast<const char*>(data), size});
  auto ids = unit.desktopIds;
  for (const auto& id : ids) FUZZ_REQUIRE(!id.empty() && id.size() <= size);
  std::sort(ids.begin(), ids.end());
  FUZZ_REQUIRE(std::adjacent_find(ids.begin(), ids.end()) == ids.end());
  FUZZ_REQUIRE(!unit.isOwnService || !unit.desktopIds.empty());
  FUZZ_REQUIRE(unit.snapApplication.empty() || !unit.snapInstance.empty());
  return 0;
}
