#include "application_socket.h"

#include <algorithm>

#include "support/local_socket.h"

namespace tollvane::bridge {

std::string applicationSocket(const std::filesystem::path& applicationSupport) {
  std::string path = applicationSupport / "Tollvane" / "bridge.sock";
  path.resize(std::min(path.size(), longestSocketPath));
  return path;
}

UniqueFd connectTo(const std::string& path) {
  const sockaddr_un address = localAddress(path);
  UniqueFd connection(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!connection) return {};
  // Where the application has no room for one more just now, this fails instead of waiting.
  if (connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return {};
  if (peerUser(connection.get()) != geteuid()) return {};
  return connection;
}

}  // namespace tollvane::bridge
