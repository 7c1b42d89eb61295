#include "platform/linux/system/resting_memory.h"

#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <utility>

namespace tollvane {
namespace {

bool isWatchedByDebugger() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.starts_with("TracerPid:")) return line != "TracerPid:\t0";
  return false;
}

void* pointerTo(std::uintptr_t address) {
  return reinterpret_cast<void*>(address);  // NOLINT(performance-no-int-to-ptr): the dynamic linker gives numbers
}

// Whether the dynamic linker has written into the parts of a program file that are only read otherwise.
bool isTextRelocated(const dl_phdr_info& object) {
  for (std::size_t i = 0; i < object.dlpi_phnum; ++i) {
    if (object.dlpi_phdr[i].p_type != PT_DYNAMIC) continue;
    const auto* entry = static_cast<const ElfW(Dyn)*>(pointerTo(object.dlpi_addr + object.dlpi_phdr[i].p_vaddr));
    for (; entry->d_tag != DT_NULL; ++entry) {
      if (entry->d_tag == DT_TEXTREL) return true;
      if (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0) return true;
    }
  }
  return false;
}

int giveBackPagesOf(dl_phdr_info* object, std::size_t, void*) {
  if (isTextRelocated(*object)) return 0;
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  for (std::size_t i = 0; i < object->dlpi_phnum; ++i) {
    const ElfW(Phdr)& part = object->dlpi_phdr[i];
    if (part.p_type != PT_LOAD || (part.p_flags & PF_W) != 0) continue;
    const std::uintptr_t begin = (object->dlpi_addr + part.p_vaddr) / page * page;
    const std::uintptr_t end = (object->dlpi_addr + part.p_vaddr + part.p_memsz) / page * page;
    // The kernel refuses for what is no file, such as its own part of every process.
    if (begin < end) madvise(pointerTo(begin), end - begin, MADV_DONTNEED);
  }
  return 0;
}

bool isAnyWindowOpen() {
  const auto windows = QApplication::topLevelWidgets();
  return std::any_of(windows.begin(), windows.end(), [](const QWidget* window) { return window->isVisible(); });
}

}  // namespace

void giveBackMemory() {
  malloc_trim(0);
  if (!isWatchedByDebugger()) dl_iterate_phdr(giveBackPagesOf, nullptr);
}

RestingMemory::RestingMemory(std::chrono::milliseconds rest, std::function<void()> giveBack) {
  rest_.setSingleShot(true);
  rest_.setInterval(rest);
  rest_.callOnTimeout([giveBack = std::move(giveBack)] {
    if (!isAnyWindowOpen()) giveBack();
  });
  rest_.start();
  QCoreApplication::instance()->installEventFilter(this);
}

bool RestingMemory::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Hide && watched->isWidgetType()) rest_.start();
  return false;
}

}  // namespace tollvane
