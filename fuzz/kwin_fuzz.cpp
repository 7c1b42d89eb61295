// Reads arbitrary bytes as KWin's list of windows, and looks for a window in it.

#include <QByteArray>
#include <cstdint>

#include "fuzz/fuzz.h"
#include "platform/linux/workspace/kwin_scripting.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tollvane;
  const auto windows = kwinWindows(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
  if (!windows) return 0;
  const auto best = bestWindowOf(*windows, {.pid = 4711, .others = {4712}, .title = "Inbox"});
  FUZZ_REQUIRE(!best || !windows->empty());
  return 0;
}
