// An application whose window is to come forward, and how its windows are recognised. A value; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/apps/desktop_entries.h"
#include "platform/process_table.h"

namespace tollvane {

struct ActivationTarget {
  Pid pid = 0;                            // the process that was asked for
  std::vector<Pid> others = {};           // the application's other processes
  std::vector<Pid> hosts = {};            // what it runs inside of: the terminal emulator of a program without windows
  DesktopEntries::Entry entry = nullptr;  // null: it has none

  // How well a window fits, as far as its process tells: the smaller the better; absent: it belongs to somebody else.
  std::optional<int> rankOfPid(Pid windowPid) const;

  // The same by the name that a window gives itself: a half of its WM_CLASS, or its app_id.
  std::optional<int> rankOfName(std::string_view windowName) const;

  // The better one of both.
  std::optional<int> rank(Pid windowPid, std::string_view name, std::string_view otherName = {}) const;
};

}  // namespace tollvane
