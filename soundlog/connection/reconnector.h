// Keeps one connection to a server up: tries at once, and again at the times that RetryPlan gives after a failure or
// when the server's socket appears. Main thread only. The owner makes the connection and reports its end.
//
//   Reconnector server(socket, [this] { return connect(); });
//   server.start();
//   ... server.ended(true);   // from the event loop, not from inside the connection's own callbacks
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "platform/clock.h"
#include "platform/posix/path_watch.h"
#include "soundlog/connection/loop.h"

namespace tollvane::soundlog {

// When to try again to connect to a server that is absent, refused or went away. Pure logic.
//
// There are no endless tries at intervals: a server announces itself by creating its socket. Only a few tries after
// that moment are useful, because the socket exists before the server listens.
class RetryPlan {
 public:
  static constexpr Duration settle = std::chrono::milliseconds(20);
  static constexpr Duration shortLife = std::chrono::seconds(2);
  static constexpr Duration longestPause = std::chrono::seconds(60);
  static constexpr int mostFailures = 4;
  static constexpr int mostShortLives = 6;

  // To be called when the server's socket appeared. Returns how long to wait before the try.
  Duration appeared();

  // To be called when a try failed. Returns how long to wait before the next. Absent: wait until the socket appears.
  std::optional<Duration> failed();

  void connected(Instant now) { connectedAt_ = now; }

  // To be called when a connection that worked has ended. If this happens again and again, the wait grows, and at last
  // it is absent.
  std::optional<Duration> lost(Instant now);

 private:
  int failures_ = mostFailures;  // no tries are left until a socket appears
  int shortLives_ = 0;
  Instant connectedAt_{};
};

// Tells when a socket appears in the file system, even if some of its parent directories do not exist yet: a PathWatch
// on the event loop.
class SocketWatch {
 public:
  // `appeared` is called whenever something is, or may have been, created at `socket`; not for what exists already.
  SocketWatch(std::filesystem::path socket, std::function<void()> appeared);

  // False if the kernel has no watch left to give.
  bool watching() const { return file_.watching(); }

 private:
  PathWatch file_;
  std::function<void()> appeared_;
  Watch watch_;  // last, so that it is destroyed before what its handler uses
};

class Reconnector {
 public:
  // `connect` begins a connection and returns whether it may succeed; if it fails later, the owner calls ended(false).
  // `connect` may be called while there is a connection, and then only returns true.
  Reconnector(std::optional<std::filesystem::path> socket, std::function<bool()> connect);

  void start();

  // Stops all tries until the next start(). The owner disconnects by itself.
  void stop();

  // To be called when the server has answered: the connection works.
  void served();

  // To be called when a connection that had worked has ended (`served`) or could not be made. False if nothing is tried
  // again before the socket appears.
  bool ended(bool served);

 private:
  void watchSocket();
  bool tryAgain(std::optional<Duration> delay);
  void attempt();

  std::optional<std::filesystem::path> socket_;
  std::function<bool()> connect_;
  RetryPlan plan_;
  std::unique_ptr<SocketWatch> watch_;
  Watch timer_;
};

}  // namespace tollvane::soundlog
