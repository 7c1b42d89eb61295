// Keeps one connection to a server up: tries at once, then whenever the server's socket appears, as RetryPlan says.
// Main thread only. The owner does the connecting; it says when a connection ended.
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
#include "platform/linux/kernel/path_watch.h"
#include "soundlog/connection/loop.h"

namespace tollvane::soundlog {

// When to try again to connect to a server that is not there, refused, or went away. Pure logic.
//
// Nothing is tried at intervals for ever: a server announces itself by making its socket, and only shortly after such a
// moment it is worth trying a few times, because the socket is there before the server listens.
class RetryPlan {
 public:
  static constexpr Duration settle = std::chrono::milliseconds(20);
  static constexpr Duration shortLife = std::chrono::seconds(2);
  static constexpr Duration longestPause = std::chrono::seconds(60);
  static constexpr int mostFailures = 4;
  static constexpr int mostShortLives = 6;

  // The server's socket appeared: try after this time.
  Duration appeared();

  // A try came to nothing. Absent: wait until the socket appears.
  std::optional<Duration> failed();

  void connected(Instant now) { connectedAt_ = now; }

  // A connection ended. A server that goes away again and again is asked ever more seldom, and then no more.
  std::optional<Duration> lost(Instant now);

 private:
  int failures_ = mostFailures;  // nothing has appeared yet
  int shortLives_ = 0;
  Instant connectedAt_{};
};

// Tells when a socket appears in the file system, however much of the way to it is missing: a PathWatch on the event
// loop.
class SocketWatch {
 public:
  // `appeared` is called whenever something is created at `socket`, or may have been. Not for what is there already.
  SocketWatch(std::filesystem::path socket, std::function<void()> appeared);

  // False when the kernel has no watch left to give.
  bool watching() const { return file_.watching(); }

 private:
  PathWatch file_;
  std::function<void()> appeared_;
  Watch watch_;  // last: it must not outlive what its handler uses
};

class Reconnector {
 public:
  // `connect` begins a connection and is true when there is hope for it; a hope that fails is told by ended(false).
  // It may be called again while there is a connection, and then just says true.
  Reconnector(std::optional<std::filesystem::path> socket, std::function<bool()> connect);

  void start();

  // No more tries and no connection from now on, until start(). The owner disconnects by itself.
  void stop();

  // The server answered: the connection works.
  void served();

  // The connection that was hoped for failed, or (`served`) one that had worked ended. False when nothing is tried
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
