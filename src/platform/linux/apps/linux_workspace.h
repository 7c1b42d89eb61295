// The applications of a Linux desktop: what desktop entries, processes and windows say together. An application's
// "bundle identifier" is translated to the ids of desktop entries, and where it is installed is the entry's file.
// Main thread only. Whoever makes the Applications keeps them alive.
#pragma once

#include "platform/linux/apps/applications.h"
#include "platform/workspace.h"

namespace tollvane {

class LinuxWorkspace : public Workspace {
 public:
  LinuxWorkspace(const ProcFs& processes, const Applications& applications);

  std::optional<RunningApplication> runningApplication(Pid pid) const override;
  std::vector<RunningApplication> runningApplications(std::string_view bundleID) const override;
  std::optional<std::filesystem::path> urlForApplication(std::string_view bundleID) const override;
  std::optional<std::filesystem::path> urlForApplicationNamed(std::string_view displayName) const override;
  std::string displayName(const std::filesystem::path& path) const override;

 private:
  std::vector<DesktopEntries::Entry> installed(std::string_view bundleID) const;

  const ProcFs& processes_;
  const Applications& applications_;
};

}  // namespace tollvane
