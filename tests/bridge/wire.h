// A test's end of a pipe or socket. Everything that waits has a deadline, which is reached only if something is wrong.
// One thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/unique_fd.h"
#include "tests/support/process.h"

namespace tollvane::test {

class Wire {
 public:
  Wire() = default;
  explicit Wire(UniqueFd descriptor);

  // False if the other side does not take all of it before the deadline, or is gone.
  bool write(std::string_view bytes);

  // Writes `bytes` again and again as long as the other side takes some of them at once. Returns the part of the last
  // `bytes` that was not taken; write that before anything else.
  std::string fill(std::string_view bytes);

  // The next line or frame, without its newline or length. Absent after the deadline and at the end of the input.
  // frame() passes over the messages in which the bridge itself reports the state of the link.
  std::optional<std::string> line(std::chrono::milliseconds deadline = patience);
  std::optional<std::string> frame(std::chrono::milliseconds deadline = patience);

  // The next of those messages; frame() has not passed over it.
  std::optional<std::string> link() { return anyFrame(std::chrono::steady_clock::now() + patience); }

  // Whether the other side closes before the deadline. What arrives before that is kept for unread().
  bool ends();
  const std::string& unread() const { return unread_; }

  void close() { descriptor_.reset(); }
  int descriptor() const { return descriptor_.get(); }

 private:
  using Deadline = std::chrono::steady_clock::time_point;

  std::optional<std::string> anyFrame(Deadline until);
  bool ready(short events, Deadline until) const;
  bool readMore(Deadline until);
  std::optional<std::string> take(std::size_t header, std::size_t size, std::size_t footer);

  UniqueFd descriptor_;
  std::string unread_;
  bool ended_ = false;
};

}  // namespace tollvane::test
