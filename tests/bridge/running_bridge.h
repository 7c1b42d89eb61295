// The real TollvaneBridge, with the test at the browser's ends of its pipes. Ends with its owner. One thread.
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
    Variables variables{};  // further ones
    std::optional<std::filesystem::path>
        browser{};                                // a program, made for this, that starts it; absent: the test itself
    bool strayDescriptor = false;                 // one more pipe is inherited, as number 3
    std::optional<std::filesystem::path> copy{};  // runs as a copy that is made there
  };

  explicit RunningBridge(const std::filesystem::path& dataHome) : RunningBridge(dataHome, Options()) {}
  RunningBridge(const std::filesystem::path& dataHome, const Options& options);
  ~RunningBridge();
  RunningBridge(const RunningBridge&) = delete;
  RunningBridge& operator=(const RunningBridge&) = delete;

  Wire input;   // written to
  Wire output;  // read from
  Wire stray;   // of the stray descriptor

  // Of the bridge, or of the browser that started it.
  pid_t pid() const { return pid_; }
  void kill();

  // Its exit code, or 128 plus the signal that ended it. Absent when it still runs after the deadline.
  std::optional<int> exitCode();

  // Whether it reads, by the deadline, everything that was written.
  bool readsAll();

  std::size_t descriptors() const;
  std::size_t residentBytes() const;

 private:
  bool ended();

  pid_t pid_ = -1;
  std::optional<int> exitCode_;
};

}  // namespace tollvane::test
