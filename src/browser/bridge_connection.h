// The connection to a browser's bridge. Main thread only.
//
//   auto connection = std::make_shared<BridgeConnection>(std::move(stream), queue);
//   connection->onMessage = ...;
//   connection->onClosed = ...;
//   connection->startReading();
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "browser/browser_connection.h"
#include "platform/main_queue.h"
#include "platform/posix/local_socket.h"
#include "platform/posix/outbox.h"
#include "support/line_buffer.h"

namespace tollvane {

// JSON objects over a stream, one per line. Lines that are not JSON objects are dropped. The connection closes if the
// bridge does. A bridge that floods it, or never reads, harms no other: little is read in one turn of the main queue,
// and nothing ever waits.
class BridgeConnection : public BrowserConnection, public std::enable_shared_from_this<BridgeConnection> {
 public:
  static constexpr std::size_t longestLine = 1 << 20;  // a longer line is dropped
  static constexpr std::size_t mostUnread = 1 << 20;   // a bridge that leaves more unread is disconnected
  static constexpr std::size_t readInOneTurn = 1 << 10;

  // `queue` must outlive the connection.
  BridgeConnection(LocalStream stream, MainQueue& queue) : stream_(std::move(stream)), queue_(queue) {}

  std::function<void(const Message& message)> onMessage;
  std::function<void()> onClosed;  // called once, when the bridge is gone; may destroy the connection

  void startReading();

  // Never waits: what the socket has no room for is written while the bridge reads. If too much is unread, the stream
  // is shut down, so that no other message follows half of this one; then onClosed is called as usual.
  void send(const Message& message) override;

 private:
  void readSome();
  void writeSome();

  LocalStream stream_;
  MainQueue& queue_;
  LineBuffer lines_{longestLine};
  Outbox outbox_;
  std::unique_ptr<MainQueue::Watch> readable_;  // destroyed before `stream_`
  std::unique_ptr<MainQueue::Watch> writable_;  // not null while something is in `outbox_`
};

}  // namespace tollvane
