// When to try again to connect to a server that is not there, refused, or went away. Pure logic; one thread.
//
// Nothing is tried at intervals for ever: a server announces itself by making its socket, and only shortly after such a
// moment it is worth trying a few times, because the socket is there before the server listens.
#pragma once

#include <chrono>
#include <optional>

#include "platform/clock.h"

namespace tollvane::soundlog {

class RetryPlan {
 public:
  static constexpr Duration kSettle = std::chrono::milliseconds(20);
  static constexpr Duration kShortLife = std::chrono::seconds(2);
  static constexpr Duration kLongestPause = std::chrono::seconds(60);
  static constexpr int kMostFailures = 4;
  static constexpr int kMostShortLives = 6;

  // The server's socket appeared: try after this time.
  Duration appeared();

  // A try came to nothing. Absent: wait until the socket appears.
  std::optional<Duration> failed();

  void connected(Instant now) { connectedAt_ = now; }

  // A connection ended. A server that goes away again and again is asked ever more seldom, and then no more.
  std::optional<Duration> lost(Instant now);

 private:
  int failures_ = kMostFailures;  // nothing has appeared yet
  int shortLives_ = 0;
  Instant connectedAt_{};
};

}  // namespace tollvane::soundlog
