// The socket at which the browsers' bridges find Tollvane, and the connection to each bridge. Main thread only.
//
//   BridgeListener listener(queue);
//   listener.onConnection = [&](LocalStream stream) {
//     auto connection = std::make_shared<BridgeConnection>(std::move(stream), 1s);
//     connection->onMessage = ...;
//     connection->onClosed = ...;
//     connection->startReading(queue);
//   };
//   listener.open(paths.bridgeSocket());
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "browser/browser_connection.h"
#include "platform/main_queue.h"
#include "platform/posix/local_socket.h"
#include "support/line_buffer.h"
#include "support/liveness.h"

namespace tollvane {

// Only its own user can connect. A socket that a crash left behind is replaced; a socket at which another Tollvane
// answers is left alone. Fails silently: then no bridge can connect.
class BridgeListener {
 public:
  explicit BridgeListener(MainQueue& queue) : queue_(queue) {}

  // Called with the stream of each bridge that connects.
  std::function<void(LocalStream stream)> onConnection;

  // A path that is too long for a socket is cut.
  void open(const std::string& path);

  // Removes the socket's file too, if it still belongs to this listener.
  void close();

  bool isOpen() const { return static_cast<bool>(listener_); }

 private:
  void watch();
  void acceptConnection();

  MainQueue& queue_;
  LocalListener listener_;
  std::unique_ptr<MainQueue::Watch> watch_;  // destroyed before `listener_`
  Liveness alive_;
};

// JSON objects over a stream, one per line. Lines that are not JSON objects are dropped. The connection closes if the
// bridge does.
class BridgeConnection : public BrowserConnection, public std::enable_shared_from_this<BridgeConnection> {
 public:
  // A longer line is dropped.
  static constexpr std::size_t longestLine = 100'000'000;

  // `patience`: how long the bridge may take to make room for one message.
  BridgeConnection(LocalStream stream, std::chrono::milliseconds patience);

  std::function<void(const Message& message)> onMessage;
  std::function<void()> onClosed;  // called once, when the bridge is gone; may destroy the connection

  void startReading(MainQueue& queue);

  // Waits until the whole message is written. If the bridge does not make room in time, the stream is shut down, so
  // that no other message follows half of this one; then onClosed is called as usual.
  void send(const Message& message) override;

 private:
  void readSome();

  LocalStream stream_;
  std::chrono::milliseconds patience_;
  LineBuffer lines_{longestLine};
  std::unique_ptr<MainQueue::Watch> watch_;  // destroyed before `stream_`
};

}  // namespace tollvane
