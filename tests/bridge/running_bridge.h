// The real TollvaneBridge, with the test at the browser's ends of its pipes. The bridge ends with this object. One
// thread.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/bridge/wire.h"
#include "tests/support/process.h"

namespace tollvane::test {

class RunningBridge {
 public:
  struct Options {
    std::vector<std::string> arguments = {"chrome-extension://abcdefghijklmnopabcdefghijklmnop/"};
    Variables variables{};  // more environment variables
    std::optional<std::filesystem::path>
        browser{};                 // path of a program to make, which starts the bridge; absent: the test starts it
    bool strayDescriptor = false;  // if true, the bridge inherits one more pipe, as descriptor 3
    std::optional<std::filesystem::path> copy{};  // path for a copy of the bridge, which runs instead of it
  };

  explicit RunningBridge(const std::filesystem::path& dataHome) : RunningBridge(dataHome, Options()) {}
  RunningBridge(const std::filesystem::path& dataHome, const Options& options);
  ~RunningBridge();
  RunningBridge(const RunningBridge&) = delete;
  RunningBridge& operator=(const RunningBridge&) = delete;

  Wire input;   // the test writes here
  Wire output;  // the test reads here
  Wire stray;   // the test's end of the stray descriptor's pipe

  // The id of the bridge, or of the browser that started it.
  pid_t pid() const { return pid_; }
  void kill();

  // The exit code of pid(), or 128 plus the signal that ended it. Absent if it still runs after the deadline.
  std::optional<int> exitCode();

  // Whether the bridge reads everything that was written to `input` before the deadline.
  bool readsAll();

  std::size_t descriptors() const;
  std::size_t residentBytes() const;

 private:
  bool ended();

  pid_t pid_ = -1;
  std::optional<int> exitCode_;
};

}  // namespace tollvane::test
