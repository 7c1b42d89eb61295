#include "application_socket.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>

namespace tollvane::bridge {
namespace {

// Not what Linux could hold, but what every system can.
constexpr std::size_t kLongestPath = 103;
static_assert(kLongestPath < sizeof sockaddr_un::sun_path);

bool isOurs(int connection) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

}  // namespace

std::string applicationSocket(const std::filesystem::path& applicationSupport) {
  std::string path = applicationSupport / "Tollvane" / "bridge.sock";
  path.resize(std::min(path.size(), kLongestPath));
  return path;
}

UniqueFd connectTo(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, kLongestPath);
  UniqueFd connection(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!connection) return {};
  // Where the application has no room for one more just now, this fails instead of waiting.
  if (connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return {};
  if (!isOurs(connection.get())) return {};
  return connection;
}

}  // namespace tollvane::bridge
