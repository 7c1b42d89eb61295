// One desktop entry: the file by which an application describes itself to the desktop.
// Source of the format: freedesktop.org, Desktop Entry 1.5. The localised name follows LANGUAGE, LC_ALL,
// LC_MESSAGES and LANG as GLib reads them. Values; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tollvane {

inline constexpr std::string_view desktopFileEnding = ".desktop";

struct DesktopEntry {
  std::string id;    // the file's name without the ending
  std::string path;  // of the file
  std::string name;  // in the user's language, valid UTF-8; may be empty
  // The command line without its field codes (%U) and without `env NAME=value` in front; empty where there is none.
  std::vector<std::string> command;
  std::string tryExec;
  std::string startupWmClass;
  std::string flatpakId;
  std::string snapInstance;
  bool hidden = false;     // stands for "the user has deleted this one"
  bool noDisplay = false;  // not for menus
  bool terminal = false;   // runs inside of a terminal emulator
  bool shownHere = true;   // what OnlyShowIn and NotShowIn say about the current desktop
  bool isTerminalEmulator = false;
  bool isFileManager = false;
  bool isWebBrowser = false;
  bool dbusActivatable = false;   // the bus knows it by its id
  bool singleMainWindow = false;  // started again, it shows the window that it has

  // Where `command`'s program is: as the search path finds it, and after all links. Empty when it is not installed,
  // or when it is a mere interpreter or launcher, of which nothing can be concluded.
  std::string program;
  std::string realProgram;
  std::string realTryExec;
  std::string script;     // the real path of what `command` lets an interpreter run, or its bare name
  bool installed = true;  // false when TryExec names a program that is missing

  // What the user counts among the applications: neither hidden nor a tool nor for another desktop.
  bool isRegular() const { return installed && !hidden && !noDisplay && !terminal && shownHere; }

  // The entry of a bare interpreter (python3.11). Nothing that a process does is to be credited to it.
  bool isInterpretersOwn() const;

  // How many arguments `command` gives to its program. The entry with the fewest is the application itself; the
  // others are ways into it (a private window, one document).
  std::size_t extraArguments() const { return command.empty() ? 0 : command.size() - 1; }
};

// Reads the text of an entry. Absent unless it is an application's. Takes anything: text that is not UTF-8 is made so.
// `currentDesktop` is in the form of XDG_CURRENT_DESKTOP ("GNOME:Phosh"). Leaves id, path and the programs open.
std::optional<DesktopEntry> parseDesktopEntry(std::string text, std::string_view currentDesktop);

// Reads the entry that a file holds, by the rules above; absent too when it is no plain file or absurdly long.
std::optional<DesktopEntry> readDesktopEntry(const std::string& path, std::string_view currentDesktop);

// Looks for the programs that the entry names; `searchPath` is in the form of PATH.
void findPrograms(DesktopEntry& entry, std::string_view searchPath);

// Valid UTF-8 out of any bytes.
std::string sanitized(std::string_view text);

}  // namespace tollvane
