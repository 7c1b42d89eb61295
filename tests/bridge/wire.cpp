#include "tests/bridge/wire.h"

#include <fcntl.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

namespace tollvane::test {

using std::chrono::steady_clock;

Wire::Wire(UniqueFd descriptor) : descriptor_(std::move(descriptor)) {
  fcntl(descriptor_.get(), F_SETFL, fcntl(descriptor_.get(), F_GETFL) | O_NONBLOCK);
}

bool Wire::write(std::string_view bytes) {
  const auto until = steady_clock::now() + patience;
  while (!bytes.empty()) {
    if (!ready(POLLOUT, until)) return false;
    const ssize_t written = ::write(descriptor_.get(), bytes.data(), bytes.size());
    if (written < 0 && errno != EAGAIN && errno != EINTR) return false;
    bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
  }
  return true;
}

std::string Wire::fill(std::string_view bytes) {
  std::string_view left = bytes;
  // Give the other side a moment to take more.
  while (ready(POLLOUT, steady_clock::now() + std::chrono::milliseconds(300))) {
    const ssize_t written = ::write(descriptor_.get(), left.data(), left.size());
    if (written < 0 && errno != EAGAIN && errno != EINTR) break;
    left.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    if (left.empty()) left = bytes;
  }
  return std::string(left.size() == bytes.size() ? std::string_view() : left);
}

std::optional<std::string> Wire::line(std::chrono::milliseconds deadline) {
  const auto until = steady_clock::now() + deadline;
  std::size_t searched = 0;
  while (true) {
    const auto end = unread_.find('\n', searched);
    if (end != std::string::npos) return take(0, end, 1);
    searched = unread_.size();
    if (!readMore(until)) return std::nullopt;
  }
}

std::optional<std::string> Wire::frame(std::chrono::milliseconds deadline) {
  const auto until = steady_clock::now() + deadline;
  while (true) {
    auto found = anyFrame(until);
    if (!found || !found->starts_with(R"({"type":"link")")) return found;
  }
}

std::optional<std::string> Wire::anyFrame(Deadline until) {
  std::uint32_t length = 0;
  while (unread_.size() < sizeof length)
    if (!readMore(until)) return std::nullopt;
  std::memcpy(&length, unread_.data(), sizeof length);
  while (unread_.size() - sizeof length < length)
    if (!readMore(until)) return std::nullopt;
  return take(sizeof length, length, 0);
}

bool Wire::ends() {
  const auto until = steady_clock::now() + patience;
  while (readMore(until)) {
  }
  return ended_;
}

bool Wire::ready(short events, Deadline until) const {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - steady_clock::now());
  pollfd query{descriptor_.get(), events, 0};
  return left.count() >= 0 && poll(&query, 1, static_cast<int>(left.count())) > 0;
}

bool Wire::readMore(Deadline until) {
  if (ended_ || !ready(POLLIN, until)) return false;
  std::array<char, 65536> buffer{};
  const ssize_t size = read(descriptor_.get(), buffer.data(), buffer.size());
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) return true;
  ended_ = size <= 0;
  if (!ended_) unread_.append(buffer.data(), static_cast<std::size_t>(size));
  return !ended_;
}

std::optional<std::string> Wire::take(std::size_t header, std::size_t size, std::size_t footer) {
  std::string result = unread_.substr(header, size);
  unread_.erase(0, header + size + footer);
  return result;
}

}  // namespace tollvane::test
