// Reads arbitrary bytes as sway's tree of windows, and looks for a window in it.

#include <QByteArray>
#include <QJsonDocument>
#include <cstdint>

#include "fuzz/fuzz.h"
#include "platform/linux/workspace/sway_ipc.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tollvane;
  const QByteArray tree(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
  const auto best = bestWindow(tree, {.pid = 4711, .others = {4712}, .title = "Inbox"});
  FUZZ_REQUIRE(!best || QJsonDocument::fromJson(tree).isObject());
  return 0;
}
