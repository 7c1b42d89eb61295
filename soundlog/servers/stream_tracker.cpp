#include "soundlog/servers/stream_tracker.h"

#include "support/ascii.h"

namespace tollvane::soundlog {
void StreamTracker::reset() {
  attached_ = false;
  streams_.clear();
}

bool StreamTracker::running(Serial stream, Instant now) {
  Stream& known = streams_[stream];
  if (known.running) return false;
  known.running = true;
  if (!attached_) return false;
  return !known.stoppedAt || now - *known.stoppedAt >= shortestPause;
}

void StreamTracker::stopped(Serial stream, Instant now) {
  Stream& known = streams_[stream];
  if (known.running) known.stoppedAt = now;
  known.running = false;
}

bool StartMerger::merges(const std::string& who, Instant now) {
  std::erase_if(starts_, [now](const auto& start) { return now - start.second >= shortestPause; });
  return !starts_.emplace(who, now).second;
}

bool isRelay(const Properties& properties) { return !properties("node.link-group").empty(); }

bool isAlert(const Properties& properties) {
  const std::string_view role = properties("media.role");
  return ascii::equalIgnoringCase(role, "notification") || ascii::equalIgnoringCase(role, "event") ||
         !properties("event.id").empty();
}

}  // namespace tollvane::soundlog
