// Tells when a stream of a sound server begins to make a sound. Pure logic that knows no server: it is given a server's
// reports and the time. One thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace tollvane::soundlog {

// Shorter pauses are ignored: seeking, or moving a stream to another output, stops it for a moment.
inline constexpr Duration shortestPause = std::chrono::milliseconds(300);

class StreamTracker {
 public:
  // Names one stream as long as the server lives; never used again for another.
  using Serial = std::uint64_t;

  // To be called when all streams that existed before us have been reported. Only starts after this are news.
  void attached() { attached_ = true; }

  // To be called when the server is gone.
  void reset();

  // To be called when the stream runs. True if a sound starts by this.
  bool running(Serial stream, Instant now);

  void stopped(Serial stream, Instant now);
  void removed(Serial stream) { streams_.erase(stream); }

  // Returns a function that tells whether the stream runs at the time of the call. It may outlive the tracker.
  std::function<bool()> watch(Serial stream) const;

 private:
  struct Stream {
    bool running = false;
    std::optional<Instant> stoppedAt;  // absent if it has not run and then stopped yet
  };

  Stream& known(Serial stream);

  bool attached_ = false;
  std::map<Serial, std::shared_ptr<Stream>> streams_;
};

// Several streams that one process starts at about the same time (a probe, then the real one) are one sound.
class StartMerger {
 public:
  // True if `who` had a start before `now` that was not merged itself, and the time that was given `together` with it
  // is not over. Otherwise remembers this one.
  bool merges(const std::string& who, Instant now, Duration together = shortestPause);

  std::size_t size() const { return starts_.size(); }

 private:
  std::map<std::string, Instant> starts_;  // until when others are merged with each
};

// Returns the stream's property of this name; empty if none exists.
using Properties = std::function<std::string_view(const char* name)>;

// Whether the stream only passes on what others play (a loopback, a combined output).
bool isRelay(const Properties& properties);

// Whether the stream is a short signal: its role says so, or it names an event.
bool isAlert(const Properties& properties);

}  // namespace tollvane::soundlog
