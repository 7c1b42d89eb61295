// The socket at which the bridges of the browsers find Tollvane. Open to its user only; a socket that a crash left
// behind is replaced, one that another Tollvane answers at is left alone. Failure is silent: nobody is heard then.
// Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/main_queue.h"
#include "platform/posix/local_socket.h"
#include "support/liveness.h"

namespace tollvane {

class BridgeListener {
 public:
  explicit BridgeListener(MainQueue& queue) : queue_(queue) {}

  // Called with the stream of each bridge that connects.
  std::function<void(LocalStream stream)> onConnection;

  // A path that is too long for a socket is cut.
  void open(const std::string& path);

  // Removes the socket's file too, if it is still this one's.
  void close();

  bool isOpen() const { return static_cast<bool>(listener_); }

 private:
  void watch();
  void acceptConnection();

  MainQueue& queue_;
  LocalListener listener_;
  std::unique_ptr<MainQueue::Watch> watch_;  // ends before the listener does
  Liveness alive_;
};

}  // namespace tollvane
