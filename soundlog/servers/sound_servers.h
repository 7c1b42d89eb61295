// Listens to PipeWire, or to PulseAudio while PipeWire cannot be connected. Never to both, because PipeWire speaks
// PulseAudio's protocol too, and every sound would be reported twice. Main thread only.
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
  std::unique_ptr<SoundSource> pulse_;  // set while it is needed, if its module is installed
  Reconnector pipeWireLink_;
  Reconnector pulseLink_;
};

}  // namespace tollvane::soundlog
