#include "soundlog/servers/sound_servers.h"

#include <dlfcn.h>

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "soundlog/servers/pipewire_source.h"

namespace tollvane::soundlog {

namespace {

constexpr const char* pulseModule = "TollvaneLogPulse.so";

// Loads the module that listens to PulseAudio; it lies beside the program and is never unloaded. Null if the module, or
// a library that it needs, is missing.
std::unique_ptr<SoundSource> loadPulseSource(SoundSource::Remember remember, SoundSource::Events events) {
  using Make = SoundSource* (*)(SoundSource::Remember, SoundSource::Events);
  std::error_code unknown;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", unknown);
  const auto module = program.parent_path() / pulseModule;
  void* const handle = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
  const auto make = handle ? reinterpret_cast<Make>(dlsym(handle, "tollvaneMakePulseSource")) : nullptr;
  if (!make) {
    std::fprintf(stderr, "TollvaneLog: Sounds of PulseAudio cannot be noticed: %s\n", dlerror());
    return nullptr;
  }
  return std::unique_ptr<SoundSource>(make(std::move(remember), std::move(events)));
}

}  // namespace

SoundServers::SoundServers(const Environment& environment, SoundSource::Remember remember, Started started)
    : remember_(std::move(remember)),
      started_(std::move(started)),
      pipeWireLink_(pipeWireSocket(environment),
                    [this] {
                      const bool connected = pipeWire_->connect();
                      connected ? stopFallback() : startFallback();
                      return connected;
                    }),
      // If there is no socket, libpulse would create its directory, perhaps just when a server is about to do so.
      pulseLink_(pulseSocket(environment), [this, socket = pulseSocket(environment)] {
        std::error_code ignored;
        return (!socket || std::filesystem::exists(*socket, ignored)) && pulse_->connect();
      }) {
  const auto ended = [this](bool served) {
    if (!pipeWireLink_.ended(served)) startFallback();
  };
  pipeWire_ = std::make_unique<PipeWireSource>(
      remember_, SoundSource::Events{started_, [this] { pipeWireLink_.served(); }, ended});
}

void SoundServers::start() { pipeWireLink_.start(); }

void SoundServers::startFallback() {
  if (pulse_) return;
  const auto ended = [this](bool served) { pulseLink_.ended(served); };
  pulse_ = loadPulseSource(remember_, SoundSource::Events{started_, [this] { pulseLink_.served(); }, ended});
  if (pulse_) pulseLink_.start();
}

void SoundServers::stopFallback() {
  pulseLink_.stop();
  pulse_.reset();
}

}  // namespace tollvane::soundlog
