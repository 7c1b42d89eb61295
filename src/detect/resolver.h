// Finds the application that the user knows as the maker of a sound: a web content process, a helper or a command-line
// tool is credited to the browser, the application or the terminal that owns it. Keeps nothing between calls: the
// answer is about the processes at this moment. Nothing fails: the last rule always gives a text. Main thread only.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"
#include "platform/locations.h"
#include "platform/process_table.h"
#include "platform/workspace.h"

namespace tollvane {

class Resolver {
 public:
  Resolver(const ProcessTable& processes, const Workspace& workspace, const Locations& locations, const Files& files)
      : processes_(processes), workspace_(workspace), locations_(locations), files_(files) {}

  // `pid` itself if it still runs, else the first of its `ancestors` that does; `pid` if none of them runs.
  Pid living(Pid pid, std::span<const Pid> ancestors) const;

  // The process that the system holds responsible for `pid`; absent if the system does not say.
  std::optional<Pid> responsiblePid(Pid pid) const;

  // The user-facing application behind a process: the responsible one, else the nearest regular one among the process
  // itself and its ancestors, seven generations at most.
  std::optional<RunningApplication> regularApp(Pid pid) const;

  // Of an application's processes that started one another, the first: a browser's own process, not the one in which it
  // plays. `application`: any of them, as regularApp() gave it.
  RunningApplication mainProcess(RunningApplication application) const;

  // The name to show for the maker of a sound. `fallback`: the process's name as it was reported; it may be cut to 16
  // characters, and it may be empty. `application`: what regularApp(pid) has said, for a caller that has asked already.
  std::string appName(Pid pid, std::string_view fallback) const { return appName(pid, fallback, regularApp(pid)); }
  std::string appName(Pid pid, std::string_view fallback, const std::optional<RunningApplication>& application) const;

  // The name to show for the application with this bundle identifier; the identifier itself if the system knows no
  // name.
  std::string appName(std::string_view bundleID) const;

  // All names under which the system shows it; the identifier itself if the system knows no name.
  std::vector<std::string> appNames(std::string_view bundleID) const;

  // Where the application with this display name is installed. The name must be exact: it is not trimmed, and case
  // matters.
  std::optional<std::filesystem::path> appURL(std::string_view named) const;

 private:
  const ProcessTable& processes_;
  const Workspace& workspace_;
  const Locations& locations_;
  const Files& files_;
};

}  // namespace tollvane
