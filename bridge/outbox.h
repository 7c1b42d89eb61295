// Bytes that wait until a descriptor takes them. Gives its memory back when a large message is gone. One thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tollvane::bridge {

class Outbox {
 public:
  void push(std::string&& message);

  bool empty() const { return bytes_.empty(); }
  std::size_t size() const { return bytes_.size() - sent_; }
  std::string_view waiting() const { return std::string_view(bytes_).substr(sent_); }

  // Writes what the descriptor, which must not block, takes now. False when it takes nothing any more.
  bool flush(int descriptor);

  void clear();

 private:
  std::string bytes_;  // empty as soon as all is sent
  std::size_t sent_ = 0;
};

}  // namespace tollvane::bridge
