#include "bridge/outbox.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace tollvane::bridge {
namespace {

// An emptied queue whose memory is larger than this frees it.
constexpr std::size_t mostKept = 64 * 1024;

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
    const ssize_t written = write(descriptor, waiting().data(), size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return true;
    if (written < 0) return false;
    sent_ += static_cast<std::size_t>(written);
    if (sent_ == bytes_.size()) clear();
  }
  return true;
}

void Outbox::clear() {
  sent_ = 0;
  if (bytes_.capacity() > mostKept) {
    std::string().swap(bytes_);
  } else {
    bytes_.clear();
  }
}

}  // namespace tollvane::bridge
