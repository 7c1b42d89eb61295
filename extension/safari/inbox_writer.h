// Leaves the messages of Safari's extension in the folder that Tollvane watches: one file each, which appears whole,
// under names that sort in the order of the messages, even if several handlers write. Fails silently. One thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/files.h"

namespace tollvane {

class InboxWriter {
 public:
  // While Tollvane does not run, nobody takes the messages. Only so many of the newest are kept.
  static constexpr std::size_t mostWaiting = 100;
  static constexpr std::size_t longestMessage = 1 << 20;

  // `writer`: a number that no other program has that writes at the same time: the process's own.
  InboxWriter(Files& files, std::filesystem::path inbox, std::int64_t writer)
      : files_(files), inbox_(std::move(inbox)), writer_(writer) {}

  // `message`: a JSON object. `microseconds`: now, since 1970. False if it could not be left, for example because the
  // disk is full; then nothing is left of it.
  bool write(std::string_view message, std::int64_t microseconds) {
    if (message.size() > longestMessage || !files_.createDirectories(inbox_)) return false;
    last_ = std::max(microseconds, last_ + 1);  // the clock may be set back
    makeRoom();
    // Written under another name, which does not end in ".json", and then renamed.
    return files_.writeAtomically(inbox_ / name(), message);
  }

 private:
  std::string name() const {
    constexpr std::size_t digits = 20;
    const std::string time = std::to_string(last_);
    return std::string(digits - std::min(digits, time.size()), '0') + time + '-' + std::to_string(writer_) + ".json";
  }

  void makeRoom() {
    auto waiting = files_.list(inbox_).value_or(std::vector<std::string>());
    std::erase_if(waiting, [](const std::string& name) { return !name.ends_with(".json"); });
    std::sort(waiting.begin(), waiting.end());
    for (std::size_t i = 0; i + mostWaiting <= waiting.size(); ++i) files_.remove(inbox_ / waiting[i]);
  }

  Files& files_;
  std::filesystem::path inbox_;
  std::int64_t writer_;
  std::int64_t last_ = 0;
};

}  // namespace tollvane
