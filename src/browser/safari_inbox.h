// Where Safari's extension leaves its messages: files that end in ".json", one JSON object each, named so that their
// order is that of the messages. Each is taken away after one attempt to read it, whatever it holds; other files are
// left alone. Failure is silent. Main thread only.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "browser/browser_connection.h"
#include "platform/files.h"
#include "platform/main_queue.h"

namespace tollvane {

class SafariInbox {
 public:
  // A larger file holds no message.
  static constexpr std::size_t largestMessage = 64 << 20;

  SafariInbox(MainQueue& queue, Files& files) : queue_(queue), files_(files) {}

  std::function<void(const Message& message)> onMessage;

  // Makes the directory, empties it, and from then on whenever something appears in it.
  void start(const std::filesystem::path& directory);

 private:
  void drain();

  MainQueue& queue_;
  Files& files_;
  std::filesystem::path directory_;
  std::unique_ptr<MainQueue::Watch> watch_;
};

}  // namespace tollvane
