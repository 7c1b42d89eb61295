#include "platform/linux/system/resting_memory.h"

#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEvent>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "support/ascii.h"

namespace tollvane {
namespace {

using Areas = std::map<std::uintptr_t, std::uintptr_t>;  // beginnings and ends

// What this process maps for reading only, and has changed nothing of. Source of the format: proc(5), smaps.
Areas unchangedAreas() {
  Areas areas;
  std::ifstream smaps("/proc/self/smaps");
  std::pair<std::uintptr_t, std::uintptr_t> area;
  bool isReadOnly = false;
  for (std::string line; std::getline(smaps, line);) {
    std::string_view rest = line;
    const auto begin = ascii::number<std::uintptr_t>(ascii::takePart(rest, '-'), 16);
    const auto end = ascii::number<std::uintptr_t>(ascii::takePart(rest, ' '), 16);
    if (begin && end) {
      area = {*begin, *end};
      isReadOnly = rest.starts_with("r--p") || rest.starts_with("r-xp");
    } else if (isReadOnly && line.starts_with("Anonymous:") && line.ends_with(" 0 kB")) {
      areas.insert(area);
    }
  }
  return areas;
}

// The dynamic linker calls this for each library, and lets no thread unload one meanwhile.
int giveBackPagesOf(dl_phdr_info* library, std::size_t, void* context) {
  const auto& unchanged = *static_cast<const Areas*>(context);
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  for (std::size_t i = 0; i < library->dlpi_phnum; ++i) {
    const ElfW(Phdr)& part = library->dlpi_phdr[i];
    if (part.p_type != PT_LOAD || (part.p_flags & PF_W) != 0) continue;
    const auto area = unchanged.find((library->dlpi_addr + part.p_vaddr) / page * page);
    if (area == unchanged.end()) continue;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the dynamic linker and the kernel give numbers
    madvise(reinterpret_cast<void*>(area->first), area->second - area->first, MADV_DONTNEED);
  }
  return 0;
}

}  // namespace

void giveBackMemory() {
  malloc_trim(0);
  Areas unchanged = unchangedAreas();
  dl_iterate_phdr(giveBackPagesOf, &unchanged);
}

RestingMemory::RestingMemory(std::chrono::milliseconds rest, std::function<void()> giveBack) {
  rest_.setSingleShot(true);
  rest_.setInterval(rest);
  rest_.callOnTimeout(std::move(giveBack));
  rest_.start();
  QCoreApplication::instance()->installEventFilter(this);
}

bool RestingMemory::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Hide && watched->isWidgetType()) rest_.start();
  return false;
}

}  // namespace tollvane
