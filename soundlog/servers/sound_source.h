// A sound server as TollvaneLog sees it: something to connect to, that tells when a process begins to play.
// Main thread only.
#pragma once

#include <functional>

#include "soundlog/makers/maker.h"

namespace tollvane::soundlog {

struct StreamStart {
  Maker maker;
  bool alert = false;  // a short signal rather than music or speech
};

class SoundSource {
 public:
  // Remembers the process of a client, see Makers.
  using Remember = std::function<Maker(const ClientClaims&)>;

  // All are called from the event loop.
  struct Events {
    std::function<void(const StreamStart&)> started;
    std::function<void()> served;            // the connection works
    std::function<void(bool served)> ended;  // the connection is gone, everything of it forgotten
  };

  virtual ~SoundSource() = default;

  // Begins to connect, if there is no connection yet. False when there is no server to connect to.
  virtual bool connect() = 0;

  // Without a word to the handlers.
  virtual void disconnect() = 0;
};

}  // namespace tollvane::soundlog
