// When does a stream of a sound server begin to make a sound? Pure logic, fed with what a server tells and with the
// time; it knows no server. One thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace tollvane::soundlog {

// A pause shorter than this is none: seeking, or moving a stream to another output, stops it for a moment.
inline constexpr Duration shortestPause = std::chrono::milliseconds(300);

class StreamTracker {
 public:
  // Names one stream for as long as the server lives; never used again for another.
  using Serial = std::uint64_t;

  // All streams that were there before us have been told. What they play is not news; from now on a start is.
  void attached() { attached_ = true; }

  // The server is gone.
  void reset();

  // The stream runs. True when a sound starts by that.
  bool running(Serial stream, Instant now);

  void stopped(Serial stream, Instant now);
  void removed(Serial stream) { streams_.erase(stream); }

 private:
  struct Stream {
    bool running = false;
    std::optional<Instant> stoppedAt;  // absent: never ran
  };

  bool attached_ = false;
  std::map<Serial, Stream> streams_;
};

// Several streams that one process starts in one go (a probe, then the real one) are one sound.
class StartMerger {
 public:
  // True when `who` had a start within shortestPause before `now` that was not merged itself. Otherwise this is one.
  bool merges(const std::string& who, Instant now);

  std::size_t size() const { return starts_.size(); }

 private:
  std::map<std::string, Instant> starts_;
};

// A property of a stream; empty when it has none of that name.
using Properties = std::function<std::string_view(const char* name)>;

// The stream only passes on what others play (a loopback, a combined output).
bool isRelay(const Properties& properties);

// The stream is a short signal, by its role or because it names the event it stands for.
bool isAlert(const Properties& properties);

}  // namespace tollvane::soundlog
