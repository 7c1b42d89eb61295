#include "output_queue.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

namespace tollvane::soundlog {
namespace {

bool isSocket(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode);
}

}  // namespace

OutputQueue::OutputQueue(int descriptor, std::size_t limit)
    : descriptor_(descriptor), limit_(limit), socket_(isSocket(descriptor)) {}

void OutputQueue::push(std::string line) {
  if (broken_) return;
  bytes_ += line.size();
  lines_.push_back(std::move(line));
  flush();
  // A line that the reader has the beginning of is never dropped.
  while (bytes_ > limit_ && lines_.size() > 1) {
    const auto oldest = lines_.begin() + (begun_ > 0 ? 1 : 0);
    bytes_ -= oldest->size();
    lines_.erase(oldest);
  }
}

void OutputQueue::flush() {
  while (pending() && !broken_) {
    const Room now = room();
    if (now == Room::none) return;
    if (now == Room::gone) broken_ = true;
    if (!broken_ && !writeSome()) return;
  }
  if (!broken_) return;
  lines_.clear();
  bytes_ = 0;
}

OutputQueue::Room OutputQueue::room() const {
  pollfd query{descriptor_, POLLOUT, 0};
  if (poll(&query, 1, 0) <= 0) return Room::none;
  if (query.revents & (POLLERR | POLLHUP | POLLNVAL)) return Room::gone;
  return query.revents & POLLOUT ? Room::some : Room::none;
}

// A pipe that can be written takes PIPE_BUF bytes without blocking, see pipe(7).
bool OutputQueue::writeSome() {
  const std::string& line = lines_.front();
  const std::size_t size = std::min<std::size_t>(line.size() - begun_, PIPE_BUF);
  const char* bytes = line.data() + begun_;
  const ssize_t written =
      socket_ ? send(descriptor_, bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL) : write(descriptor_, bytes, size);
  if (written < 0) {
    if (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR) return false;
    // A full disk loses lines, but it is no reader who went away.
    if (errno == ENOSPC || errno == EDQUOT || errno == EFBIG) {
      bytes_ -= line.size();
      begun_ = 0;
      lines_.pop_front();
      return true;
    }
    broken_ = true;
    return true;
  }
  begun_ += static_cast<std::size_t>(written);
  if (begun_ < line.size()) return true;
  bytes_ -= line.size();
  begun_ = 0;
  lines_.pop_front();
  return true;
}

}  // namespace tollvane::soundlog
