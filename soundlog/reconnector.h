// Keeps one connection to a server up: tries at once, then whenever the server's socket appears, as RetryPlan says.
// Main thread only. The owner does the connecting; it says when a connection ended.
//
//   Reconnector server(socket, [this] { return connect(); });
//   server.start();
//   ... server.ended(true);   // from the event loop, not from inside the connection's own callbacks
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "loop.h"
#include "retry_plan.h"
#include "socket_watch.h"

namespace tollvane::soundlog {

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
