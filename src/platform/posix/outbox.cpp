#include "platform/posix/outbox.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace tollvane {
namespace {

// An emptied queue whose memory is larger than this frees it.
constexpr std::size_t mostRoomKept = 64 * 1024;

}  // namespace

void Outbox::push(std::string&& message) {
  if (bytes_.empty() && message.size() > bytes_.capacity()) {
    bytes_ = std::move(message);
    return;
  }
  bytes_.erase(0, std::exchange(sent_, 0));
  bytes_ += message;
}

bool Outbox::flush(int descriptor) {
  while (!bytes_.empty()) {
    const ssize_t size = write(descriptor, waiting().data(), this->size());
    if (size < 0 && errno == EINTR) continue;
    if (size < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return true;
    if (size < 0) return false;
    written(static_cast<std::size_t>(size));
  }
  return true;
}

bool Outbox::flush(const LocalStream& stream) {
  const auto sent = stream.send(waiting());
  if (sent) written(*sent);
  return sent.has_value();
}

void Outbox::written(std::size_t size) {
  sent_ += size;
  if (sent_ == bytes_.size()) clear();
}

void Outbox::clear() {
  sent_ = 0;
  if (bytes_.capacity() > mostRoomKept) {
    std::string().swap(bytes_);
  } else {
    bytes_.clear();
  }
}

}  // namespace tollvane
