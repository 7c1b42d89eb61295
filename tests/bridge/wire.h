// A test's end of a pipe or socket. Nothing waits longer than a deadline, and no deadline is waited for unless
// something is wrong. One thread.
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

  // False when the other side has not taken all of it by the deadline, or is gone.
  bool write(std::string_view bytes);

  // Writes `bytes` again and again while the other side takes some at once. What was not taken of the last ones is
  // returned; add it before anything else.
  std::string fill(std::string_view bytes);

  // What comes next, without its framing. Absent after the deadline and at the end. frame() passes over the messages in
  // which the bridge itself tells of the link.
  std::optional<std::string> line(std::chrono::milliseconds deadline = patience);
  std::optional<std::string> frame(std::chrono::milliseconds deadline = patience);

  // The next of those messages; frame() has not passed over it.
  std::optional<std::string> link() { return anyFrame(std::chrono::steady_clock::now() + patience); }

  // Whether the other side closes before the deadline. Everything that arrives before goes to unread().
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
