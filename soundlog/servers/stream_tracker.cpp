#include "soundlog/servers/stream_tracker.h"

#include "support/ascii.h"

namespace tollvane::soundlog {
void StreamTracker::reset() {
  attached_ = false;
  streams_.clear();
}

bool StreamTracker::running(Serial stream, Instant now) {
  Stream& known = streams_[stream];
  if (known.run) return false;
  known.run = std::make_shared<const bool>(true);
  if (!attached_) return false;
  return !known.stoppedAt || now - *known.stoppedAt >= shortestPause;
}

void StreamTracker::stopped(Serial stream, Instant now) {
  Stream& known = streams_[stream];
  if (known.run) known.stoppedAt = now;
  known.run.reset();
}

std::function<bool()> StreamTracker::watch(Serial stream) const {
  const auto known = streams_.find(stream);
  if (known == streams_.end()) return [] { return false; };
  return [run = std::weak_ptr(known->second.run)] { return !run.expired(); };
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
