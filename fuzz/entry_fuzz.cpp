// Reads arbitrary bytes as a desktop entry and as a D-Bus service file. Whatever they hold, names are valid UTF-8, and
// looking for the programs ends.

#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/fuzz.h"
#include "platform/linux/apps/desktop_entry.h"

namespace tollvane {
namespace {

void check(std::optional<DesktopEntry> entry) {
  if (!entry) return;
  FUZZ_REQUIRE(sanitized(entry->name) == entry->name);
  for (const std::string& argument : entry->command) FUZZ_REQUIRE(argument.find('\0') == std::string::npos);
  findPrograms(*entry, "relative:/nonexistent");
  FUZZ_REQUIRE(entry->installed || !entry->tryExec.empty());
  FUZZ_REQUIRE(entry->program.empty() || !entry->command.empty());
}

}  // namespace
}  // namespace tollvane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tollvane;
  const std::string input(reinterpret_cast<const char*>(data), size);
  check(parseDesktopEntry(input, "XFCE:GNOME"));
  check(parseBusService(input));
  const std::string valid = sanitized(input);
  FUZZ_REQUIRE(sanitized(valid) == valid);
  return 0;
}
