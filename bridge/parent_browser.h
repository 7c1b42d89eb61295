// Which browser started this process. Any thread.
//
// Sources: native messaging pages of Chrome's and Firefox's extension documentation (arguments); flatpak-metadata(5)
// (/.flatpak-info); the folders into which the makers' packages install.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/kernel/proc_fs.h"

namespace tollvane::bridge {

struct ParentBrowser {
  std::string executable{};   // real path of the parent's program; empty when it cannot be known
  std::string flatpakInfo{};  // what /.flatpak-info says in the parent's view of the files; empty outside of a Flatpak
  bool isChromium = false;    // by the argument that only that family hands over
  // Variables that every program inherits, also from another browser or a terminal: hints, no more.
  std::string snapName{};
  std::string chromeDesktop{};
};

using Variable = std::function<const char*(const char* name)>;

// To be asked at once: when the parent ends, its number may be another's. `arguments` are without the program's name.
ParentBrowser parentBrowser(const ProcFs& processes, Pid parent, const std::vector<std::string>& arguments,
                            const Variable& variable);

// The browser's bundle identifier, one of the table in catalogue/browsers.h or a Flatpak's own name; empty if it cannot
// be told. Only letters, digits, '.', '-' and '_'.
std::string bundleIdentifier(const ParentBrowser& parent);

// The first line that the application hears, without its end.
std::string introduction(const ParentBrowser& parent);

}  // namespace tollvane::bridge
