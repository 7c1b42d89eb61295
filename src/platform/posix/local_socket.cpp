#include "platform/posix/local_socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tollvane {
namespace {

static_assert(longestSocketPath < sizeof sockaddr_un::sun_path);

constexpr int backlog = 16;

#ifdef MSG_NOSIGNAL
constexpr int sendFlags = MSG_DONTWAIT | MSG_NOSIGNAL;
#else
constexpr int sendFlags = MSG_DONTWAIT;  // the socket itself was told not to raise a signal
#endif

bool mayBeTriedAgain(int error) { return error == EINTR || error == EAGAIN || error == EWOULDBLOCK; }

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  fittingSocketPath(path).copy(address.sun_path, longestSocketPath);
  return address;
}

// The structure's whole size, whatever the length of the path.
const sockaddr* asSockaddr(const sockaddr_un& address) { return reinterpret_cast<const sockaddr*>(&address); }

UniqueFd unblocked(UniqueFd socket) {
  if (!socket) return socket;
  ::fcntl(socket.get(), F_SETFD, FD_CLOEXEC);
  ::fcntl(socket.get(), F_SETFL, O_NONBLOCK);
#ifdef SO_NOSIGPIPE
  const int on = 1;
  ::setsockopt(socket.get(), SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
  return socket;
}

UniqueFd newSocket() { return unblocked(UniqueFd(::socket(AF_UNIX, SOCK_STREAM, 0))); }

bool bindPrivately(int socket, const sockaddr_un& address) {
  const mode_t before = ::umask(S_IXUSR | S_IRWXG | S_IRWXO);
  const bool bound = ::bind(socket, asSockaddr(address), sizeof address) == 0;
  ::umask(before);
  return bound && ::chmod(address.sun_path, S_IRUSR | S_IWUSR) == 0;
}

}  // namespace

std::string fittingSocketPath(std::string path) {
  path.resize(std::min(path.size(), longestSocketPath));
  return path;
}

bool isAnswered(const std::string& path) {
  const sockaddr_un address = addressOf(path);
  const UniqueFd probe = newSocket();
  return probe && (::connect(probe.get(), asSockaddr(address), sizeof address) == 0 || errno == EAGAIN);
}

std::optional<bool> peerIsOwnUsers(int socket) {
#ifdef SO_PEERCRED
  ucred peer{};
  socklen_t size = sizeof peer;
  if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return std::nullopt;
  return peer.uid == ::geteuid();
#else
  uid_t user{};
  gid_t group{};
  if (::getpeereid(socket, &user, &group) != 0) return std::nullopt;
  return user == ::geteuid();
#endif
}

LocalStream::LocalStream(UniqueFd socket) : socket_(unblocked(std::move(socket))) {}

LocalStream LocalStream::to(const std::string& path) {
  const sockaddr_un address = addressOf(path);
  UniqueFd socket = newSocket();
  if (!socket || ::connect(socket.get(), asSockaddr(address), sizeof address) != 0) return {};
  if (!peerIsOwnUsers(socket.get()).value_or(false)) return {};
  return LocalStream(std::move(socket));
}

LocalStream::Reading LocalStream::read(char* buffer, std::size_t size, std::string_view& bytes) const {
  const ssize_t got = ::recv(socket_.get(), buffer, size, MSG_DONTWAIT);
  if (got < 0 && mayBeTriedAgain(errno)) return Reading::nothingYet;
  if (got <= 0) return Reading::ended;
  bytes = {buffer, static_cast<std::size_t>(got)};
  return Reading::some;
}

std::optional<std::size_t> LocalStream::send(std::string_view bytes) const {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t size = ::send(socket_.get(), bytes.data() + sent, bytes.size() - sent, sendFlags);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0 && mayBeTriedAgain(errno)) break;
    if (size < 0) return std::nullopt;
    sent += static_cast<std::size_t>(size);
  }
  return sent;
}

void LocalStream::shutDown() const { ::shutdown(socket_.get(), SHUT_RDWR); }

LocalListener& LocalListener::operator=(LocalListener&& other) noexcept {
  close();
  socket_ = std::move(other.socket_);
  path_ = std::move(other.path_);
  file_ = other.file_;
  return *this;
}

LocalListener LocalListener::at(const std::string& path) {
  const sockaddr_un address = addressOf(path);
  LocalListener listener;
  ::unlink(address.sun_path);
  UniqueFd socket = newSocket();
  if (!socket || !bindPrivately(socket.get(), address) || ::listen(socket.get(), backlog) != 0) return listener;
  const auto file = fileAt(address.sun_path);
  if (!file) return listener;
  listener.socket_ = std::move(socket);
  listener.path_ = address.sun_path;
  listener.file_ = *file;
  return listener;
}

LocalListener::Accepted LocalListener::accept() const {
  UniqueFd socket(::accept(socket_.get(), nullptr, nullptr));
  if (socket) {
    const bool isWelcome = peerIsOwnUsers(socket.get()).value_or(true);
    return {Accepting::done, isWelcome ? LocalStream(std::move(socket)) : LocalStream()};
  }
  const bool exhausted = errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM;
  return {exhausted ? Accepting::exhausted : Accepting::done, {}};
}

LocalListener::Standing LocalListener::standing() const {
  const auto file = fileAt(path_);
  if (!file) return Standing::missing;
  return file == file_ ? Standing::own : Standing::replaced;
}

void LocalListener::close() {
  if (!socket_) return;
  if (standing() == Standing::own) ::unlink(path_.c_str());
  socket_.reset();
}

std::optional<LocalListener::File> LocalListener::fileAt(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return File{static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

}  // namespace tollvane
