// Bytes that wait until a file descriptor accepts them. Frees its memory after a large message has been written. One
// thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/posix/local_socket.h"

namespace tollvane {

class Outbox {
 public:
  void push(std::string&& message);

  bool empty() const { return bytes_.empty(); }
  std::size_t size() const { return bytes_.size() - sent_; }
  std::string_view waiting() const { return std::string_view(bytes_).substr(sent_); }

  // Writes as much as `descriptor` accepts now; it must not block. False if it will never accept any more.
  bool flush(int descriptor);

  // The same for a stream, which raises no signal if the other end is gone.
  bool flush(const LocalStream& stream);

  void clear();

 private:
  void written(std::size_t size);

  std::string bytes_;  // empty as soon as everything is written
  std::size_t sent_ = 0;
};

}  // namespace tollvane
