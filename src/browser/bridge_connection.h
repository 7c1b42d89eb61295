// A connection to the bridge that a browser started: JSON objects over a stream socket, one a line.
//
//   auto connection = std::make_shared<BridgeConnection>(std::move(stream), 1s);
//   connection->onMessage = ...;
//   connection->onClosed = ...;
//   connection->startReading(queue);
//
// Lines that are not JSON objects are dropped. The connection closes when the bridge does. Main thread only.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

#include "browser/browser_connection.h"
#include "platform/main_queue.h"
#include "platform/posix/local_socket.h"
#include "support/line_buffer.h"

namespace tollvane {

class BridgeConnection : public BrowserConnection, public std::enable_shared_from_this<BridgeConnection> {
 public:
  // A longer line is dropped.
  static constexpr std::size_t longestLine = 100'000'000;

  // `patience`: how long the bridge may take to make room for one message.
  BridgeConnection(LocalStream stream, std::chrono::milliseconds patience);

  std::function<void(const Message& message)> onMessage;
  std::function<void()> onClosed;  // once, when the bridge is gone; may drop the connection

  void startReading(MainQueue& queue);

  // Waits until the whole message is on its way. A bridge that does not take it in time is shut down, so that no other
  // message follows half of this one; its end is then told like any other.
  void send(const Message& message) override;

 private:
  void readSome();

  LocalStream stream_;
  std::chrono::milliseconds patience_;
  LineBuffer lines_{longestLine};
  std::unique_ptr<MainQueue::Watch> watch_;  // ends before the stream does
};

}  // namespace tollvane
