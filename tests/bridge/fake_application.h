// Listens in Tollvane's place, where a bridge connects. One thread.
#pragma once

#include <filesystem>
#include <optional>

#include "platform/posix/unique_fd.h"
#include "tests/bridge/wire.h"

namespace tollvane::test {

class FakeApplication {
 public:
  // Listens at once: the file `socket` appears only when a bridge can connect to it.
  explicit FakeApplication(std::filesystem::path socket);
  ~FakeApplication();
  FakeApplication(const FakeApplication&) = delete;
  FakeApplication& operator=(const FakeApplication&) = delete;

  // Waits for a bridge. Throws if no bridge connects before the deadline.
  Wire accept();

 private:
  std::filesystem::path socket_;
  UniqueFd listener_;
};

// A socket bound to `path`, which does not listen yet.
UniqueFd boundSocket(const std::filesystem::path& path);

// A connection to the socket at `path`.
UniqueFd connectedTo(const std::filesystem::path& path);

}  // namespace tollvane::test
