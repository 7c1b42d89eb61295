// A sound server as TollvaneLog sees it: TollvaneLog connects to it, and it reports when a process begins to play. Main
// thread only.
#pragma once

#include <functional>
#include <string_view>

#include "soundlog/makers/maker.h"

namespace tollvane::soundlog {

struct StreamStart {
  Maker maker;
  bool alert = false;               // a short signal rather than music or speech
  std::function<bool()> runs = {};  // whether the stream that began to play still does; empty: nothing is known
};

class SoundSource {
 public:
  // Remembers the process of a client, see Makers.
  using Remember = std::function<Maker(const ClientClaims&)>;

  // All are called from the event loop.
  struct Events {
    std::function<void(const StreamStart&)> started;
    std::function<void()> served;            // the connection works
    std::function<void(bool served)> ended;  // the connection is gone and its state forgotten; `served`: it had worked
    // Whether to listen to a server that calls itself so; empty: to any. If not, the connection ends.
    std::function<bool(std::string_view server)> wanted = {};
  };

  virtual ~SoundSource() = default;

  // Begins to connect, unless there is a connection already. False if there is no server to connect to.
  virtual bool connect() = 0;

  // Calls none of the handlers.
  virtual void disconnect() = 0;
};

}  // namespace tollvane::soundlog
