// Reads command lines: whether a program runs scripts of others, and which script it runs. Pure functions of text; any
// thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tollvane {

// "/usr/bin/foo" -> "foo"
std::string_view lastComponent(std::string_view path);

// "/usr/bin/foo" -> "/usr/bin"; "/" for a file in the root directory; empty for a bare name
std::string_view directoryOf(std::string_view path);

// "foo.py" -> "foo"; only endings of scripts are removed, because "org.example.Player" has no ending
std::string_view withoutScriptEnding(std::string_view name);

// Whether the program (a path or a name) is made to run scripts of others: a shell, python3.11, java. What such a
// process does is to be credited to the script, not to the interpreter.
bool isInterpreter(std::string_view program);

// Whether the program only starts another one and is never the application itself: flatpak, snap, xdg-open.
bool isLauncher(std::string_view program);

// The script, module or class that an interpreter was told to run; absent if it runs code from its command line or its
// standard input. `arguments`: begin with the name by which the interpreter was called.
std::optional<std::string> scriptOf(std::string_view interpreter, const std::vector<std::string>& arguments);

// Removes what stands before the program itself: `env NAME=value`, `nohup` and similar.
std::vector<std::string> withoutPrefixes(std::vector<std::string> arguments);

// Whether programs that are unrelated to each other are in this directory: /usr/bin, /usr/lib, ~/.local/bin.
bool isSharedDirectory(std::string_view directory);

}  // namespace tollvane
