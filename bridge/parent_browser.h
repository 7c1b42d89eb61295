// Which browser started this process. Any thread.
//
// Sources: native messaging pages of Chrome's and Firefox's extension documentation (arguments); flatpak-metadata(5)
// (/.flatpak-info); the folders into which the packages of the browsers' makers install.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/kernel/proc_fs.h"

namespace tollvane::bridge {

struct ParentBrowser {
  std::string executable{};   // real path of the parent's program; empty if it cannot be known
  std::string flatpakInfo{};  // content of /.flatpak-info as the parent sees it; empty outside of a Flatpak
  bool isChromium = false;    // known by an argument that only Chromium and its relatives pass
  // Environment variables. Only hints: they may be inherited from another browser or from a terminal.
  std::string snapName{};
  std::string chromeDesktop{};
};

using Variable = std::function<const char*(const char* name)>;

// Call this right after the start: once the parent has ended, another process may get its number. `arguments`: without
// the program's name.
ParentBrowser parentBrowser(const ProcFs& processes, Pid parent, const std::vector<std::string>& arguments,
                            const Variable& variable);

// The browser's bundle identifier: one from the table in catalogue/browsers.h, or a Flatpak's own name; empty if
// unknown. It has only letters, digits, '.', '-' and '_'.
std::string bundleIdentifier(const ParentBrowser& parent);

// Names the process, and no other one that ran before or runs later on this computer. Empty if it cannot be told; only
// hexadecimal digits and '-'.
std::string processName(const ProcFs& processes, Pid process);

// The first line that the bridge sends to the application, without its line feed.
std::string introduction(const ParentBrowser& parent);

}  // namespace tollvane::bridge
