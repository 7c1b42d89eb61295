// The applications of a Linux desktop: what desktop entries, processes and windows say together. An application's
// "bundle identifier" is translated to the ids of desktop entries, and where it is installed is the entry's file.
// Browsers are known by their programs, too. Main thread only. The constructor's arguments must outlive the object.
#pragma once

#include "platform/linux/apps/application_processes.h"
#include "platform/linux/apps/applications.h"
#include "platform/linux/workspace/browser_programs.h"
#include "platform/linux/workspace/launcher.h"
#include "platform/linux/workspace/window_raiser.h"
#include "platform/workspace.h"

namespace tollvane {

class LinuxWorkspace : public Workspace {
 public:
  LinuxWorkspace(const Applications& applications, const Clock& clock, WindowRaiser& windows, Launcher& launcher);

  std::optional<RunningApplication> runningApplication(Pid pid) const override;
  std::optional<RunningApplication> regularApplication(Pid pid) const override;
  std::vector<RunningApplication> runningApplications(std::string_view bundleID) const override;
  std::vector<RunningApplication> regularApplications() const override;
  std::vector<std::string> names(std::string_view bundleID) const override;
  std::optional<std::filesystem::path> urlForApplication(std::string_view bundleID) const override;
  std::optional<std::filesystem::path> urlForApplicationNamed(std::string_view displayName) const override;
  std::string icon(std::string_view bundleID) const override;
  std::string displayName(const std::filesystem::path& path) const override;

  // A desktop may let a window ask for attention only, instead of bringing it forward; that counts as forward.
  void activate(const RunningApplication& application, std::string_view title, std::function<void(bool)> done) override;

  void open(const std::filesystem::path& path, std::function<void(bool)> done) override;
  void openURL(std::string_view url) override;
  void openURL(std::string_view url, const std::filesystem::path& application, std::function<void(bool)> done) override;

 private:
  std::optional<RunningApplication> running(Pid pid, Applications::Wanted wanted) const;
  std::optional<Ownership> ownership(Pid pid, Applications::Wanted wanted = Applications::Wanted::any) const;
  std::optional<Ownership> ownership(RunningProgram& program, Applications::Wanted wanted) const;
  void add(const std::vector<Pid>& browsers, std::vector<ApplicationProcess>& found) const;
  std::vector<RunningApplication> oldestFirst(std::vector<ApplicationProcess> found) const;
  RunningApplication running(Pid pid, std::uint64_t startTime, const Ownership& application) const;
  ActivationTarget targetOf(Pid pid, const Ownership& application) const;
  void addAncestors(ActivationTarget& target) const;
  std::vector<DesktopEntries::Entry> installed(std::string_view bundleID) const;

  const Applications& applications_;
  ApplicationProcesses processes_;
  BrowserPrograms browsers_;
  WindowRaiser& windows_;
  Launcher& launcher_;
};

}  // namespace tollvane
