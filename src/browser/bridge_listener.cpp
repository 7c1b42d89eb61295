#include "browser/bridge_listener.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <utility>

#include "support/local_socket.h"

namespace tollvane {
namespace {

constexpr int backlog = 16;
constexpr std::chrono::seconds breather{1};  // after the process ran out of descriptors

UniqueFd streamSocket() {
  UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM, 0));
  if (socket) ::fcntl(socket.get(), F_SETFD, FD_CLOEXEC);
  return socket;
}

// The structure's whole size, whatever the length of the path.
const sockaddr* asSockaddr(const sockaddr_un& address) { return reinterpret_cast<const sockaddr*>(&address); }

bool isAnswered(const sockaddr_un& address) {
  const UniqueFd probe = streamSocket();
  if (!probe) return false;
  ::fcntl(probe.get(), F_SETFL, O_NONBLOCK);
  // A queue of callers that is full belongs to somebody who lives.
  return ::connect(probe.get(), asSockaddr(address), sizeof address) == 0 || errno == EAGAIN;
}

// The file is never open to others, not for a moment.
bool bindPrivately(int socket, const sockaddr_un& address) {
  const mode_t before = ::umask(S_IXUSR | S_IRWXG | S_IRWXO);
  const bool bound = ::bind(socket, asSockaddr(address), sizeof address) == 0;
  ::umask(before);
  return bound && ::chmod(address.sun_path, S_IRUSR | S_IWUSR) == 0;
}

}  // namespace

void BridgeListener::open(const std::string& path) {
  const sockaddr_un address = localAddress(path);
  if (isAnswered(address)) return;
  ::unlink(address.sun_path);
  UniqueFd socket = streamSocket();
  struct stat file {};
  if (!socket || !bindPrivately(socket.get(), address) || ::stat(address.sun_path, &file) != 0) return;
  // Nobody waits in accept() for a bridge that has gone again.
  ::fcntl(socket.get(), F_SETFL, O_NONBLOCK);
  ::listen(socket.get(), backlog);
  socket_ = std::move(socket);
  path_ = address.sun_path;
  device_ = file.st_dev;
  inode_ = file.st_ino;
  watch();
}

void BridgeListener::watch() {
  watch_ = queue_.watchReadable(socket_.get(), [this] { acceptConnection(); });
}

void BridgeListener::acceptConnection() {
  UniqueFd socket(::accept(socket_.get(), nullptr, nullptr));
  if (socket) {
    ::fcntl(socket.get(), F_SETFD, FD_CLOEXEC);
    if (peerUser(socket.get()).value_or(::getuid()) == ::getuid() && onConnection) onConnection(std::move(socket));
    return;
  }
  if (errno != EMFILE && errno != ENFILE && errno != ENOBUFS && errno != ENOMEM) return;
  // The caller stays in the queue, and the socket readable: looking at it again and again would not help.
  watch_.reset();
  queue_.after(breather, alive_.guard([this] {
    if (socket_ && !watch_) watch();
  }));
}

void BridgeListener::close() {
  if (!socket_) return;
  watch_.reset();
  struct stat file {};
  if (::stat(path_.c_str(), &file) == 0 && file.st_dev == device_ && file.st_ino == inode_) ::unlink(path_.c_str());
  socket_.reset();
}

}  // namespace tollvane
