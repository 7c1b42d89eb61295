#include "soundlog/servers/sound_servers.h"

#include <dlfcn.h>

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "soundlog/connection/peer.h"

namespace tollvane::soundlog {

namespace {

constexpr const char* pulseModule = "TollvaneLogPulse.so";

// Loads the module that listens to PulseAudio; it lies beside the program and is never unloaded. Null if the module, or
// a library that it needs, is missing.
std::unique_ptr<SoundSource> loadPulseSource(SoundSource::Remember remember, SoundSource::Events events) {
  using Make = SoundSource* (*)(SoundSource::Remember, SoundSource::Events);
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
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

SoundServers::SoundServers(const Environment& environment, const ProcFs& processes, SoundSource::Remember remember,
                           Started started, std::function<void()> changed)
    : processes_(processes),
      pulseSocket_(pulseSocket(environment)),
      changed_(std::move(changed)),
      pipeWireLink_(pipeWireSocket(environment),
                    [this] {
                      const bool connected = pipeWire_->connect();
                      if (!connected) pulseLink_.start();
                      return connected;
                    }),
      pulseLink_(pulseSocket_, [this] { return connectPulse(); }) {
  const auto ended = [this](bool served) {
    pipeWireServes_ = false;
    if (!pipeWireLink_.ended(served)) pulseLink_.start();
    changed_();
  };
  pipeWire_ =
      std::make_unique<PipeWireSource>(remember, SoundSource::Events{started, [this] { pipeWireServes(); }, ended});
  loadPulse_ = [this, remember, started] {
    return loadPulseSource(remember, SoundSource::Events{started,
                                                         [this] {
                                                           pulseServes_ = true;
                                                           pulseLink_.served();
                                                           changed_();
                                                         },
                                                         [this](bool served) {
                                                           pulseServes_ = false;
                                                           pulseLink_.ended(served);
                                                           changed_();
                                                         },
                                                         [this](std::string_view name) {
                                                           pulseIsPipeWires_ = name.find("PipeWire") != name.npos;
                                                           return !pipeWireServes_ || !pulseIsPipeWires_;
                                                         }});
  };
}

void SoundServers::start() { pipeWireLink_.start(); }

void SoundServers::pipeWireServes() {
  pipeWireServes_ = true;
  pipeWireLink_.served();
  if (pulse_ && (pulseIsPipeWires_ || isPipeWires())) {
    pulse_->disconnect();
    pulseServes_ = false;
  }
  pulseLink_.start();
  changed_();
}

// While the server is PipeWire's own, this fails, and is tried again when a server makes its socket anew.
bool SoundServers::connectPulse() {
  // If there is no socket, libpulse would create its directory, perhaps just when a server is about to do so.
  std::error_code ignored;
  if (pulseSocket_ && !std::filesystem::exists(*pulseSocket_, ignored)) return false;
  if (pipeWireServes_ && isPipeWires()) return false;
  if (loadPulse_) {
    pulse_ = loadPulse_();
    loadPulse_ = nullptr;
  }
  return pulse_ && pulse_->connect();
}

// Whether the PulseAudio server is certainly PipeWire. If this does not tell, the server's name does, when it is
// connected: that costs libpulse, which most desktops do not need.
bool SoundServers::isPipeWires() const {
  if (pipeWire_->hasPulseSide()) return true;
  const auto server = pulseSocket_ ? listenerAt(*pulseSocket_) : std::nullopt;
  return server && processes_.programName(*server).starts_with("pipewire");
}

}  // namespace tollvane::soundlog
