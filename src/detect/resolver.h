// From what is known of a sound's maker to the name of the application that the user knows: a web content process, a
// helper or a command-line tool is credited to the browser, the application or the terminal that owns it.
// Keeps nothing between calls: a name is that of the processes at this moment. Nothing fails: the last rule always
// gives a text. Main thread only.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/files.h"
#include "platform/locations.h"
#include "platform/process_table.h"
#include "platform/workspace.h"

namespace tollvane {

class Resolver {
 public:
  Resolver(const ProcessTable& processes, const Workspace& workspace, const Locations& locations, const Files& files)
      : processes_(processes), workspace_(workspace), locations_(locations), files_(files) {}

  // The process that the system holds responsible for `pid`, if it says so.
  std::optional<Pid> responsiblePid(Pid pid) const;

  // The user-facing application behind a process: the responsible one, else the nearest regular one among the process
  // itself and its ancestors, seven generations at most.
  std::optional<RunningApplication> regularApp(Pid pid) const;

  // What to call the maker of a sound. `fallback` is the process's name as it was reported, possibly cut to 16
  // characters, possibly empty.
  std::string appName(Pid pid, std::string_view fallback) const;

  // What to call the application with this bundle identifier; the identifier itself when nobody knows it.
  std::string appName(std::string_view bundleID) const;

  // Where the application with this display name is installed. The name is taken as it is: no trimming, no folding.
  std::optional<std::filesystem::path> appURL(std::string_view named) const;

 private:
  const ProcessTable& processes_;
  const Workspace& workspace_;
  const Locations& locations_;
  const Files& files_;
};

}  // namespace tollvane
