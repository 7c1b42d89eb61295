// The socket at which the bridges of the browsers find Tollvane. Open to its user only; a socket that a crash left
// behind is replaced, one that another Tollvane answers at is left alone. Failure is silent: nobody is heard then.
// Main thread only.
// Source: unix(7).
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/main_queue.h"
#include "support/liveness.h"
#include "support/unique_fd.h"

namespace tollvane {

class BridgeListener {
 public:
  explicit BridgeListener(MainQueue& queue) : queue_(queue) {}
  ~BridgeListener() { close(); }
  BridgeListener(const BridgeListener&) = delete;
  BridgeListener& operator=(const BridgeListener&) = delete;

  // Called with the socket of each bridge that connects.
  std::function<void(UniqueFd socket)> onConnection;

  // A path that is too long for a socket is cut.
  void open(const std::string& path);

  // Removes the socket's file too, if it is still the own one.
  void close();

  bool isOpen() const { return static_cast<bool>(socket_); }

 private:
  void watch();
  void acceptConnection();

  MainQueue& queue_;
  UniqueFd socket_;
  std::string path_;
  dev_t device_ = 0;  // of the socket's file
  ino_t inode_ = 0;
  std::unique_ptr<MainQueue::Watch> watch_;
  Liveness alive_;
};

}  // namespace tollvane
