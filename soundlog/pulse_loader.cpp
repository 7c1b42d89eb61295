#include "pulse_loader.h"

#include <dlfcn.h>

#include <cstdio>
#include <filesystem>
#include <utility>

namespace tollvane::soundlog {

std::unique_ptr<SoundSource> loadPulseSource(SoundSource::Remember remember, SoundSource::Events events) {
  using Make = SoundSource* (*)(SoundSource::Remember, SoundSource::Events);
  std::error_code unknown;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", unknown);
  const auto module = program.parent_path() / kPulseModule;
  void* const handle = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
  const auto make = handle ? reinterpret_cast<Make>(dlsym(handle, "tollvaneMakePulseSource")) : nullptr;
  if (!make) {
    std::fprintf(stderr, "TollvaneLog: Sounds of PulseAudio cannot be noticed: %s\n", dlerror());
    return nullptr;
  }
  return std::unique_ptr<SoundSource>(make(std::move(remember), std::move(events)));
}

}  // namespace tollvane::soundlog
