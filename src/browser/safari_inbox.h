// The directory in which Safari's extension leaves its messages: files that end in ".json", with one JSON object each,
// whose names sort in the order of the messages. Each file is removed after one attempt to read it, whatever it
// contains; other files are left alone. Fails silently. Main thread only.
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
  // A larger file is removed, but not read as a message.
  static constexpr std::size_t largestMessage = 64 << 20;

  SafariInbox(MainQueue& queue, Files& files) : queue_(queue), files_(files) {}

  std::function<void(const Message& message)> onMessage;

  // Creates the directory, takes the messages that are in it, and from then on each that appears.
  void start(const std::filesystem::path& directory);

 private:
  void drain();

  MainQueue& queue_;
  Files& files_;
  std::filesystem::path directory_;
  std::unique_ptr<MainQueue::Watch> watch_;
};

}  // namespace tollvane
