// The applications of the user's desktop: which run, which are installed, what they are called.
// Main thread only; every answer is of this moment.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/process_table.h"

namespace tollvane {

enum class ActivationPolicy {
  regular,    // an ordinary application: the user sees it among the running applications
  accessory,  // has a name, but no place among them (a panel, a command-line program)
};

struct RunningApplication {
  Pid pid = 0;
  std::optional<std::string> localizedName;  // as the user's desktop shows it
  ActivationPolicy activationPolicy = ActivationPolicy::accessory;

  bool operator==(const RunningApplication&) const = default;
};

class Workspace {
 public:
  virtual ~Workspace() = default;

  // The application that runs as this very process; absent when the process is gone or belongs to none.
  virtual std::optional<RunningApplication> runningApplication(Pid pid) const = 0;

  // All running processes of the application with this bundle identifier, the oldest first.
  virtual std::vector<RunningApplication> runningApplications(std::string_view bundleID) const = 0;

  // Where the application with this bundle identifier is installed: its bundle, or the file that describes it to the
  // desktop. Absent when it is not installed.
  virtual std::optional<std::filesystem::path> urlForApplication(std::string_view bundleID) const = 0;

  // The same, for the name that the desktop shows. Exact, case-sensitive. Only for a system whose applications do not
  // stand in Locations::applicationFolders(); absent elsewhere.
  virtual std::optional<std::filesystem::path> urlForApplicationNamed(std::string_view displayName) const = 0;

  // The name that the desktop shows for what is at this path; the path's last component when it knows no better.
  virtual std::string displayName(const std::filesystem::path& path) const = 0;
};

}  // namespace tollvane
