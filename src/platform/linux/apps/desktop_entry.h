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
inline constexpr std::string_view busServiceFileEnding = ".service";

struct DesktopEntry {
  std::string id;    // the file's name without ".desktop"
  std::string path;  // path of the file
  std::string name;  // in the user's language, valid UTF-8; may be empty
  // The command line without its field codes (%U) and without `env NAME=value` in front; empty if none exists.
  std::vector<std::string> command;
  std::string tryExec;
  std::string icon;  // a name of the icon theme, or a path
  std::string startupWmClass;
  std::string flatpakId;
  std::string snapInstance;
  std::string unit;        // of a D-Bus service file only: the systemd unit that starts the service
  bool hidden = false;     // the user has deleted the entry
  bool noDisplay = false;  // not shown in menus
  bool terminal = false;   // runs inside of a terminal emulator
  bool shownHere = true;   // what OnlyShowIn and NotShowIn say about the current desktop
  bool isTerminalEmulator = false;
  bool isFileManager = false;
  bool isWebBrowser = false;
  bool dbusActivatable = false;   // can be started over the bus, by its id
  bool singleMainWindow = false;  // if it is started again, it shows the window that it has

  // The paths of `command`'s program: as the search path finds it, and with all links followed. Empty if it is not
  // installed, or if it is only an interpreter or launcher, which says nothing about the application.
  std::string program;
  std::string realProgram;
  std::string realTryExec;
  std::string script;     // real path of the script that `command` gives to an interpreter, or its bare name
  bool installed = true;  // false if TryExec names a program that is missing
  bool canStart = true;   // false if the program that starts it is missing, too

  // Whether the user counts it among the applications: neither hidden nor a tool nor for another desktop.
  bool isRegular() const { return installed && !hidden && !noDisplay && !terminal && shownHere; }

  // Whether this is the entry of a bare interpreter (python3.11), to which no process must be credited.
  bool isInterpretersOwn() const;

  // How many arguments `command` gives to its program. Of several entries, the one with the fewest is the application
  // itself; the others are ways into it (a private window, one document).
  std::size_t extraArguments() const { return command.empty() ? 0 : command.size() - 1; }
};

// Parses the text of an entry; absent unless it is an application's. Accepts any bytes: text that is not UTF-8 is made
// so. `currentDesktop`: in the form of XDG_CURRENT_DESKTOP ("GNOME:Phosh"). Does not set `id`, `path` and the programs.
std::optional<DesktopEntry> parseDesktopEntry(std::string text, std::string_view currentDesktop);

// Reads and parses an entry's file; absent, too, if it is not a plain file, or longer than any real entry.
std::optional<DesktopEntry> readDesktopEntry(const std::string& path, std::string_view currentDesktop);

// Parses a D-Bus service file as if it were an entry: `name` is the name on the bus. Absent if it is not such a file.
// Accepts any bytes, and sets neither `id` nor `path` nor the programs.
// Source of the format: the D-Bus specification, "Message Bus Starting Services".
std::optional<DesktopEntry> parseBusService(std::string_view text);

// Reads and parses such a file; absent, too, if it is not a plain file, or longer than any real one.
std::optional<DesktopEntry> readBusService(const std::string& path);

// Finds the programs that the entry names; `searchPath`: in the form of PATH.
void findPrograms(DesktopEntry& entry, std::string_view searchPath);

// Makes valid UTF-8 of any bytes.
std::string sanitized(std::string_view text);

}  // namespace tollvane
