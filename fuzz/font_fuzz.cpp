// Reads arbitrary bytes as the description of a font. A font that comes out has a family, and a size that can be read.

#include <QFont>
#include <QGuiApplication>
#include <cstdint>
#include <string_view>

#include "fuzz/fuzz.h"
#include "platform/linux/drawing/font_description.h"

namespace {

// Never destroyed: the toolkit's own statics may be gone when this program's statics end.
void needApplication() {
  static int argumentCount = 1;
  static char name[] = "font_fuzz";
  static char* arguments[] = {name, nullptr};
  static QGuiApplication* application = nullptr;
  if (application != nullptr || QCoreApplication::instance() != nullptr) return;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  application = new QGuiApplication(argumentCount, arguments);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  needApplication();
  const auto font = tollvane::fontFromDescription({reinterpret_cast<const char*>(data), size});
  if (!font) return 0;
  FUZZ_REQUIRE(!font->families().isEmpty());
  for (const QString& family : font->families()) FUZZ_REQUIRE(!family.isEmpty());
  FUZZ_REQUIRE((font->pointSizeF() >= 4 && font->pointSizeF() <= 100) ||
               (font->pixelSize() >= 4 && font->pixelSize() <= 100));
  return 0;
}
