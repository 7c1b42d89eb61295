#include "soundlog/connection/peer.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>

#include "platform/posix/unique_fd.h"

namespace tollvane::soundlog {

std::optional<Pid> listenerAt(const std::filesystem::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.native().size() >= sizeof address.sun_path) return std::nullopt;
  std::memcpy(address.sun_path, path.c_str(), path.native().size());
  const UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!socket) return std::nullopt;
  if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return std::nullopt;
  ucred peer{};
  socklen_t size = sizeof peer;
  if (::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.pid <= 0) return std::nullopt;
  return peer.pid;
}

}  // namespace tollvane::soundlog
