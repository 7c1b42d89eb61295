#include <dlfcn.h>

#include "platform/macos/kernel/kernel_process.h"
#include "platform/macos/roles.h"

namespace tollvane {
namespace {

class KernelProcessTable : public ProcessTable {
 public:
  std::optional<Pid> responsiblePid(Pid pid) const override {
    // The function is in no header; a system without it keeps no such record.
    static const auto ask = reinterpret_cast<Pid (*)(Pid)>(
        ::dlsym(::dlopen(nullptr, RTLD_NOW), "responsibility_get_pid_responsible_for_pid"));
    const Pid responsible = ask == nullptr ? 0 : ask(pid);
    return responsible >= 1 ? std::optional<Pid>(responsible) : std::nullopt;
  }

  std::optional<Pid> parentPid(Pid pid) const override {
    const auto process = kernelProcess(pid);
    return process ? std::optional(process->parent) : std::nullopt;
  }
};

}  // namespace

std::unique_ptr<ProcessTable> makeProcessTable() { return std::make_unique<KernelProcessTable>(); }

}  // namespace tollvane
