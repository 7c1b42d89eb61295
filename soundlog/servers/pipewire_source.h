// Listens to PipeWire (libpipewire) for streams of programs that begin to play, and for JACK clients that are connected
// to an output: these run all the time, so their connections are all that tells. Main thread only.
// Sources: the headers of libpipewire, pipewire-client-conf(5), and the list of keys in pipewire/keys.h.
#pragma once

#include <spa/utils/hook.h>

#include <cstdint>
#include <map>
#include <memory>
#include <set>

#include "soundlog/connection/loop.h"
#include "soundlog/servers/sound_source.h"
#include "soundlog/servers/stream_tracker.h"

struct pw_context;
struct pw_core;
struct pw_loop;
struct pw_registry;
struct spa_dict;

namespace tollvane::soundlog {

// What a client's PipeWire properties say about its process. Pure.
ClientClaims pipeWireClaims(const Properties& properties);

class PipeWireSource final : public SoundSource {
 public:
  PipeWireSource(Remember remember, Events events);
  ~PipeWireSource() override;

  bool connect() override;
  void disconnect() override;

  // Whether a part of PipeWire that speaks PulseAudio's protocol is connected.
  bool hasPulseSide() const;

 private:
  class Bound;
  class Client;
  class Node;
  struct Callbacks;

  void objectAppeared(std::uint32_t id, std::string_view type, const spa_dict* properties);
  void objectVanished(std::uint32_t id);
  void syncDone(int sequence);
  void connectionLost();
  void linkAppeared(std::uint32_t id, std::uint32_t from, std::uint32_t to);
  bool leadsToSink(std::uint32_t node) const;
  void nodeState(const Node& node, bool running);

  Remember remember_;
  Events events_;
  pw_loop* loop_ = nullptr;
  pw_context* context_ = nullptr;
  pw_core* core_ = nullptr;
  pw_registry* registry_ = nullptr;
  spa_hook coreHook_{};
  spa_hook registryHook_{};
  int awaitedSync_ = 0;
  int syncsDone_ = 0;
  StreamTracker tracker_;
  std::map<std::uint32_t, std::unique_ptr<Client>> clients_;  // by global id; ids are used again at once
  std::map<std::uint32_t, std::unique_ptr<Node>> nodes_;
  std::set<std::uint32_t> sinks_;  // nodes that are outputs
  struct Link {
    std::uint32_t from = 0;  // a node
    std::uint32_t to = 0;
  };
  std::map<std::uint32_t, Link> links_;
  Watch loopWatch_;
  Watch teardown_;
};

}  // namespace tollvane::soundlog
