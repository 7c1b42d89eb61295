// What a bridge finds where Tollvane should listen. One thread.
#pragma once

#include <filesystem>
#include <optional>

#include "platform/posix/unique_fd.h"
#include "tests/bridge/wire.h"

namespace tollvane::test {

class FakeApplication {
 public:
  // Listens at once, as far as anybody can see: the socket has its name only when it can be connected to.
  explicit FakeApplication(std::filesystem::path socket);
  ~FakeApplication();
  FakeApplication(const FakeApplication&) = delete;
  FakeApplication& operator=(const FakeApplication&) = delete;

  // Throws when nobody comes before the deadline.
  Wire accept();

 private:
  std::filesystem::path socket_;
  UniqueFd listener_;
};

// A socket with that name; listening or not.
UniqueFd boundSocket(const std::filesystem::path& path);

// The other end of an application's connection.
UniqueFd connectedTo(const std::filesystem::path& path);

}  // namespace tollvane::test
