// A connection to the bridge that a browser started: JSON objects over a stream socket, one a line.
//
//   auto connection = std::make_shared<BridgeConnection>(std::move(socket), 1s);
//   connection->onMessage = ...;
//   connection->onClosed = ...;
//   connection->startReading(queue);
//
// Lines that are no JSON objects are dropped. The connection closes when the bridge does. Main thread only.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "browser/browser_connection.h"
#include "platform/main_queue.h"
#include "support/line_buffer.h"
#include "support/unique_fd.h"

namespace tollvane {

class BridgeConnection : public BrowserConnection, public std::enable_shared_from_this<BridgeConnection> {
 public:
  // A longer line is dropped.
  static constexpr std::size_t longestLine = 100'000'000;

  // `patience`: how long the bridge may take to make room for one message.
  BridgeConnection(UniqueFd socket, std::chrono::milliseconds patience);

  std::function<void(const Message& message)> onMessage;
  std::function<void()> onClosed;  // once, when the bridge is gone; may drop the connection

  void startReading(MainQueue& queue);

  // Waits until everything is on its way. A bridge that does not take the message in time is shut down, so that it
  // never gets another message behind half a one; its end is then told like any other.
  void send(const Message& message) override;

 private:
  void readSome();

  UniqueFd socket_;
  std::chrono::milliseconds patience_;
  LineBuffer lines_{longestLine};
  std::unique_ptr<MainQueue::Watch> watch_;  // ends before the socket does
};

}  // namespace tollvane
