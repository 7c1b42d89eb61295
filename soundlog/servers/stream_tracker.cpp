#include "soundlog/servers/stream_tracker.h"

#include "support/ascii.h"

namespace tollvane::soundlog {
void StreamTracker::reset() {
  attached_ = false;
  streams_.clear();
}

StreamTracker::Stream& StreamTracker::known(Serial stream) {
  auto& place = streams_[stream];
  if (!place) place = std::make_shared<Stream>();
  return *place;
}

bool StreamTracker::running(Serial stream, Instant now) {
  Stream& state = known(stream);
  if (state.running) return false;
  state.running = true;
  if (!attached_) return false;
  return !state.stoppedAt || now - *state.stoppedAt >= shortestPause;
}

void StreamTracker::stopped(Serial stream, Instant now) {
  Stream& state = known(stream);
  if (state.running) state.stoppedAt = now;
  state.running = false;
}

std::function<bool()> StreamTracker::watch(Serial stream) const {
  const auto found = streams_.find(stream);
  if (found == streams_.end()) return [] { return false; };
  return [watched = std::weak_ptr<const Stream>(found->second)] {
    const auto state = watched.lock();
    return state && state->running;
  };
}

bool StartMerger::merges(const std::string& who, Instant now, Duration together) {
  std::erase_if(starts_, [now](const auto& start) { return now >= start.second; });
  return !starts_.emplace(who, now + together).second;
}

bool isRelay(const Properties& properties) { return !properties("node.link-group").empty(); }

bool isAlert(const Properties& properties) {
  const std::string_view role = properties("media.role");
  return ascii::equalIgnoringCase(role, "notification") || ascii::equalIgnoringCase(role, "event") ||
         !properties("event.id").empty();
}

}  // namespace tollvane::soundlog
