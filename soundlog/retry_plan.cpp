#include "retry_plan.h"

#include <algorithm>

namespace tollvane::soundlog {

Duration RetryPlan::appeared() {
  failures_ = 0;
  return kSettle;
}

std::optional<Duration> RetryPlan::failed() {
  if (failures_ >= kMostFailures) return std::nullopt;
  ++failures_;
  return kSettle * (1 << (2 * failures_));  // 80, 320, 1280, 5120 ms
}

std::optional<Duration> RetryPlan::lost(Instant now) {
  failures_ = 0;
  if (now - connectedAt_ >= kShortLife) {
    shortLives_ = 0;
    return kSettle;
  }
  if (shortLives_ >= kMostShortLives) {
    shortLives_ = 0;
    failures_ = kMostFailures;
    return std::nullopt;
  }
  ++shortLives_;
  return std::min<Duration>(kShortLife * (1 << (shortLives_ - 1)), kLongestPause);
}

}  // namespace tollvane::soundlog
