// macOS lets only administrators read the system log: for other accounts the log tool ends at once, with a status of
// its own. It would do so again each time, so it is not started a second time. Main thread only.
#pragma once

#include <filesystem>
#include <utility>

namespace tollvane {

class LogRefusal {
 public:
  static constexpr int noPermission = 77;  // EX_NOPERM of sysexits(3): "Must be admin to run 'stream' command"

  explicit LogRefusal(std::filesystem::path logTool) : logTool_(std::move(logTool)) {}

  bool mayStart(const std::filesystem::path& program) const { return !refused_ || program != logTool_; }

  // To be told of each program that has ended by itself. True if the user should be told now.
  bool ended(const std::filesystem::path& program, int status) {
    return program == logTool_ && status == noPermission && !std::exchange(refused_, true);
  }

 private:
  std::filesystem::path logTool_;
  bool refused_ = false;
};

}  // namespace tollvane
