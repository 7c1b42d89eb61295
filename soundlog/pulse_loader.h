// Loads what listens to PulseAudio, the module that lies beside the program. Main thread only. Once loaded it stays.
#pragma once

#include <memory>

#include "sound_source.h"

namespace tollvane::soundlog {

inline constexpr const char* kPulseModule = "TollvaneLogPulse.so";

// Null where the module, or a library that it needs, is missing.
std::unique_ptr<SoundSource> loadPulseSource(SoundSource::Remember remember, SoundSource::Events events);

}  // namespace tollvane::soundlog
