#include "browser/bridge_connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "support/json.h"
#include "support/json_value.h"

namespace tollvane {
namespace {

#ifdef MSG_NOSIGNAL
constexpr int sendFlags = MSG_DONTWAIT | MSG_NOSIGNAL;
#else
constexpr int sendFlags = MSG_DONTWAIT;  // the socket itself was told not to raise a signal
#endif

constexpr std::size_t readSize = 65536;

bool mayBeTriedAgain(int error) { return error == EINTR || error == EAGAIN || error == EWOULDBLOCK; }

// Whether the socket has room before `deadline`, or is broken, which the next send tells.
bool waitForRoom(int socket, std::chrono::steady_clock::time_point deadline) {
  using std::chrono::milliseconds;
  const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
  if (left <= milliseconds::zero()) return false;
  pollfd query{socket, POLLOUT, 0};
  return ::poll(&query, 1, static_cast<int>(left.count())) != 0;
}

}  // namespace

BridgeConnection::BridgeConnection(UniqueFd socket, std::chrono::milliseconds patience)
    : socket_(std::move(socket)), patience_(patience) {
#ifdef SO_NOSIGPIPE
  const int on = 1;
  ::setsockopt(socket_.get(), SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
}

void BridgeConnection::startReading(MainQueue& queue) {
  watch_ = queue.watchReadable(socket_.get(), [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->readSome();
  });
}

// One read each time, so that a busy bridge leaves room for the others.
void BridgeConnection::readSome() {
  std::array<char, readSize> bytes;
  const ssize_t size = ::recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
  if (size < 0 && mayBeTriedAgain(errno)) return;
  if (size <= 0) {
    watch_.reset();
    if (const auto closed = std::exchange(onClosed, nullptr)) closed();
    return;
  }
  lines_.append({bytes.data(), static_cast<std::size_t>(size)});
  while (const auto line = lines_.next())
    if (const auto message = json::object(*line); message && onMessage) onMessage(*message);
}

void BridgeConnection::send(const Message& message) {
  const std::string line = json::compact(message) + '\n';
  std::string_view left = line;
  const auto deadline = std::chrono::steady_clock::now() + patience_;
  while (!left.empty()) {
    const ssize_t sent = ::send(socket_.get(), left.data(), left.size(), sendFlags);
    if (sent > 0)
      left.remove_prefix(static_cast<std::size_t>(sent));
    else if (!mayBeTriedAgain(errno) || !waitForRoom(socket_.get(), deadline))
      break;
  }
  if (!left.empty()) ::shutdown(socket_.get(), SHUT_RDWR);
}

}  // namespace tollvane
