#include "tests/bridge/fake_application.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tollvane::test {

namespace {

using Name = int (*)(int, const sockaddr*, socklen_t);

UniqueFd named(const std::filesystem::path& path, Name name) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.native().size() >= sizeof address.sun_path) throw std::runtime_error("the path is too long");
  path.native().copy(address.sun_path, sizeof address.sun_path - 1);
  UniqueFd descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (name(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    throw std::system_error(errno, std::generic_category(), path);
  return descriptor;
}

}  // namespace

UniqueFd boundSocket(const std::filesystem::path& path) { return named(path, bind); }
UniqueFd connectedTo(const std::filesystem::path& path) { return named(path, connect); }

FakeApplication::FakeApplication(std::filesystem::path socket) : socket_(std::move(socket)) {
  std::filesystem::create_directories(socket_.parent_path());
  const auto unseen = socket_.parent_path() / "new";
  std::filesystem::remove(unseen);
  listener_ = boundSocket(unseen);
  listen(listener_.get(), 16);
  std::filesystem::rename(unseen, socket_);
}

FakeApplication::~FakeApplication() {
  std::error_code ignored;
  std::filesystem::remove(socket_, ignored);
}

Wire FakeApplication::accept() {
  pollfd query{listener_.get(), POLLIN, 0};
  if (poll(&query, 1, static_cast<int>(patience.count())) <= 0) throw std::runtime_error("nobody connects");
  return Wire(UniqueFd(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC)));
}

}  // namespace tollvane::test
