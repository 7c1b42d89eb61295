#include "soundlog/output_queue.h"

#include <fcntl.h>
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

// A pipe of one page can be written exactly if it is empty. Failure does no harm: the descriptor may not be a pipe, or
// the pipe may hold more than a page at the moment.
void makeSmall(int descriptor) { fcntl(descriptor, F_SETPIPE_SZ, 4096); }

}  // namespace

OutputQueue::OutputQueue(int descriptor, std::size_t limit)
    : descriptor_(descriptor), limit_(limit), socket_(isSocket(descriptor)) {
  makeSmall(descriptor);
}

void OutputQueue::push(Line line) {
  if (broken_) return;
  lines_.push_back(std::move(line));
  flush();
  while (lines_.size() > limit_) lines_.pop_front();
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
  begun_.clear();
}

OutputQueue::Room OutputQueue::room() const {
  pollfd query{descriptor_, POLLOUT, 0};
  if (poll(&query, 1, 0) <= 0) return Room::none;
  if (query.revents & (POLLERR | POLLHUP | POLLNVAL)) return Room::gone;
  return query.revents & POLLOUT ? Room::some : Room::none;
}

// A pipe that can be written accepts PIPE_BUF bytes without blocking, see pipe(7).
bool OutputQueue::writeSome() {
  const bool fresh = begun_.empty();
  if (fresh) begun_ = lines_.front()();
  const std::size_t size = std::min<std::size_t>(begun_.size(), PIPE_BUF);
  const ssize_t written = socket_ ? send(descriptor_, begun_.data(), size, MSG_DONTWAIT | MSG_NOSIGNAL)
                                  : write(descriptor_, begun_.data(), size);
  if (written < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
    if (fresh) begun_.clear();  // the text is made again when it can be written
    return false;
  }
  if (fresh) lines_.pop_front();
  if (written >= 0) {
    begun_.erase(0, static_cast<std::size_t>(written));
  } else {
    begun_.clear();
    // A full disk loses lines, but the reader is still there.
    broken_ = errno != ENOSPC && errno != EDQUOT && errno != EFBIG;
  }
  return true;
}

}  // namespace tollvane::soundlog
