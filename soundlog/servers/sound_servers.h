// Listens to PipeWire and to PulseAudio. PipeWire speaks PulseAudio's protocol, too: while PipeWire is heard, its own
// PulseAudio side is not listened to, because every sound would be reported twice. Main thread only.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/linux/kernel/proc_fs.h"
#include "soundlog/connection/addresses.h"
#include "soundlog/connection/reconnector.h"
#include "soundlog/servers/pipewire_source.h"
#include "soundlog/servers/sound_source.h"

namespace tollvane::soundlog {

class SoundServers {
 public:
  using Started = std::function<void(const StreamStart&)>;

  // `processes` must outlive the object. `changed` is called after isServed() may have changed.
  SoundServers(const Environment& environment, const ProcFs& processes, SoundSource::Remember remember, Started started,
               std::function<void()> changed);

  void start();

  // Whether there is a sound server that reports sounds.
  bool isServed() const { return pipeWireServes_ || pulseServes_; }

 private:
  void pipeWireServes();
  bool connectPulse();
  bool isPipeWires() const;

  const ProcFs& processes_;
  std::optional<std::filesystem::path> pulseSocket_;
  std::function<void()> changed_;
  bool pipeWireServes_ = false;
  bool pulseServes_ = false;
  bool pulseIsPipeWires_ = false;  // what the PulseAudio server said that was connected last
  std::unique_ptr<PipeWireSource> pipeWire_;
  std::unique_ptr<SoundSource> pulse_;  // null until it is needed, or if its module is missing
  std::function<std::unique_ptr<SoundSource>()> loadPulse_;
  Reconnector pipeWireLink_;
  Reconnector pulseLink_;
};

}  // namespace tollvane::soundlog
