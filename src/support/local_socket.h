// What both ends of the socket between Tollvane and its bridges have to agree on. POSIX only; any thread.
// Source: unix(7).
#pragma once

#include <sys/socket.h>
#include <sys/types.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <optional>
#include <string>

namespace tollvane {

// Not what one system could hold, but what every system can. A longer path is cut there, by both ends alike.
inline constexpr std::size_t longestSocketPath = 103;
static_assert(longestSocketPath < sizeof sockaddr_un::sun_path);

inline sockaddr_un localAddress(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, longestSocketPath);
  return address;
}

// Who is at the other end; absent where the system does not tell.
inline std::optional<uid_t> peerUser(int socket) {
#ifdef SO_PEERCRED
  ucred peer{};
  socklen_t size = sizeof peer;
  return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? std::optional(peer.uid) : std::nullopt;
#else
  uid_t user{};
  gid_t group{};
  return ::getpeereid(socket, &user, &group) == 0 ? std::optional(user) : std::nullopt;
#endif
}

}  // namespace tollvane
