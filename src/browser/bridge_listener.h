// The socket at which the browsers' bridges find Tollvane. Main thread only.
//
//   BridgeListener listener(queue, files);
//   listener.onConnection = [&](LocalStream stream) { ... };
//   listener.open(paths.bridgeSocket());
#pragma once

#include <memory>
#include <string>

#include "platform/files.h"
#include "platform/main_queue.h"
#include "platform/posix/local_socket.h"
#include "support/liveness.h"

namespace tollvane {

// Only its own user can connect. What stands at the path is replaced: the last Tollvane that is started hears the
// browsers. If the socket's file or its folder vanishes, it is made again. If another Tollvane has replaced it, it is
// left alone, and made again after that one has ended. Nothing is reported: while the socket cannot be made, no bridge
// can connect, and there are more tries: after seconds at first, and every two minutes if it never can be made.
class BridgeListener {
 public:
  static constexpr std::chrono::milliseconds settling{1000};    // between a change of the folder and a look at it
  static constexpr std::chrono::milliseconds retryDelay{5000};  // between the first tries; doubles with each failure
  static constexpr std::chrono::milliseconds longestRetryDelay{120'000};

  // Both arguments must outlive the listener.
  BridgeListener(MainQueue& queue, Files& files) : queue_(queue), files_(files) {}

  // Called with the stream of each bridge that connects.
  std::function<void(LocalStream stream)> onConnection;

  // A path that is too long for a socket is cut.
  void open(const std::string& path);

  // Removes the socket's file too, if it still belongs to this listener.
  void close();

 private:
  void listen();
  void watch();
  void watchFolder();
  void acceptConnection();
  void lookLater(Duration delay);
  void look();
  void awaitEndOfOwner();

  MainQueue& queue_;
  Files& files_;
  std::string path_;  // empty while closed
  LocalListener listener_;
  LocalStream owner_;                               // to the Tollvane that replaced the socket
  std::unique_ptr<MainQueue::Watch> watch_;         // destroyed before `listener_`
  std::unique_ptr<MainQueue::Watch> ownersWatch_;   // destroyed before `owner_`
  std::unique_ptr<MainQueue::Watch> foldersWatch_;  // null while the folder cannot be watched
  Duration delay_ = retryDelay;                     // before the next try
  bool lookIsDue_ = false;
  Liveness alive_;
};

}  // namespace tollvane
