// Listens to PulseAudio (libpulse) for streams of programs that begin to play; for desktops without PipeWire. Main
// thread only. Never starts a server. Source: the documentation of libpulse (introspect.h, subscribe.h) and its list of
// property names.
#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "soundlog/connection/loop.h"
#include "soundlog/servers/sound_source.h"
#include "soundlog/servers/stream_tracker.h"

struct pa_client_info;
struct pa_context;
struct pa_glib_mainloop;
struct pa_sink_input_info;

namespace tollvane::soundlog {

// What the properties of a client or a stream say about its process. Pure.
ClientClaims pulseClaims(const Properties& properties);

class PulseSource final : public SoundSource {
 public:
  PulseSource(Remember remember, Events events);
  ~PulseSource() override;

  bool connect() override;
  void disconnect() override;

 private:
  struct Callbacks;
  struct Client {
    ClientClaims claims;
    Maker maker;
  };

  void ready();
  void listen(const char* server);
  void connectionLost();
  void clientKnown(const pa_client_info& info);
  void streamKnown(const pa_sink_input_info& info);
  StreamStart start(const pa_sink_input_info& info, const Properties& properties) const;

  Remember remember_;
  Events events_;
  pa_glib_mainloop* mainloop_ = nullptr;
  pa_context* context_ = nullptr;
  bool served_ = false;
  StreamTracker tracker_;
  std::map<std::uint32_t, Client> clients_;  // by index; an index is never used again
  Watch teardown_;
};

}  // namespace tollvane::soundlog
