#include "sound_servers.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "pipewire_source.h"
#include "pulse_loader.h"

namespace tollvane::soundlog {

SoundServers::SoundServers(const Environment& environment, SoundSource::Remember remember, Started started)
    : remember_(std::move(remember)),
      started_(std::move(started)),
      pipeWireLink_(pipeWireSocket(environment),
                    [this] {
                      const bool connected = pipeWire_->connect();
                      connected ? stopFallback() : startFallback();
                      return connected;
                    }),
      // libpulse makes the directory of a socket that is not there, and may do so just when a server is about to.
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
