// Listens to the sound server that there is: PipeWire, or PulseAudio while PipeWire cannot be connected; never both,
// because PipeWire speaks PulseAudio's language too and every sound would be told twice. Main thread only.
#pragma once

#include <functional>
#include <memory>

#include "soundlog/connection/addresses.h"
#include "soundlog/connection/reconnector.h"
#include "soundlog/servers/sound_source.h"

namespace tollvane::soundlog {

class SoundServers {
 public:
  using Started = std::function<void(const StreamStart&)>;

  SoundServers(const Environment& environment, SoundSource::Remember remember, Started started);

  void start();

 private:
  void startFallback();
  void stopFallback();

  SoundSource::Remember remember_;
  Started started_;
  std::unique_ptr<SoundSource> pipeWire_;
  std::unique_ptr<SoundSource> pulse_;  // only while it is needed, and where there is the module for it
  Reconnector pipeWireLink_;
  Reconnector pulseLink_;
};

}  // namespace tollvane::soundlog
