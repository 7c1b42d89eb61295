// The link with its real socket, and bridges at the other end. The queue is the virtual one, which polls the real
// descriptors.
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "browser/browser_link.h"
#include "platform/posix/unique_fd.h"
#include "support/json_value.h"
#include "tests/support/temporary_directory.h"
#include "tests/virtual/core_parts.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {

inline sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, 103);
  return address;
}

// A bridge's end of the socket.
class Bridge {
 public:
  explicit Bridge(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_un address = addressOf(path);
    connected = ::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  explicit Bridge(UniqueFd socket) : connected(true), socket_(std::move(socket)) {}

  void write(std::string_view bytes) const {
    ASSERT_EQ(::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
  }
  // Everything that has arrived by now.
  std::string read() const {
    std::string all;
    std::array<char, 65536> bytes;
    ssize_t size = 0;
    while ((size = ::recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT)) > 0)
      all.append(bytes.data(), static_cast<std::size_t>(size));
    return all;
  }
  bool closed() const {
    char byte = 0;
    return ::recv(socket_.get(), &byte, 1, MSG_DONTWAIT | MSG_PEEK) == 0;
  }
  void close() { socket_.reset(); }
  int fd() const { return socket_.get(); }

  bool connected = false;

 private:
  UniqueFd socket_;
};

class BridgeSocketTest : public testing::Test {
 protected:
  BridgeSocketTest() {
    system.locations.support = directory.path();
    std::filesystem::create_directories(directory.path() / "Tollvane");
    system.files.createDirectories(directory.path() / "Tollvane");
    link->onChange = [this] { ++changes; };
    link->onTab = [this](BrowserConnection&, const Message& report) { reports.push_back(report); };
  }
  std::string path() const { return directory.path() / "Tollvane/bridge.sock"; }
  Bridge connect() {
    Bridge bridge(path());
    EXPECT_TRUE(bridge.connected);
    system.queue.drainDescriptors();
    return bridge;
  }

  test::TemporaryDirectory directory;
  test::VirtualPlatform system;
  Paths paths{system.locations, system.files};
  std::unique_ptr<BrowserLink> link = std::unique_ptr<BrowserLink>(new BrowserLink(test::makeLink(system, paths)));
  int changes = 0;
  std::vector<Message> reports;
};

}  // namespace tollvane
