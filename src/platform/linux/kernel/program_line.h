// Reading command lines: which program runs another one's script, and which script that is. Pure functions over text;
// any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tollvane {

// "/usr/bin/foo" -> "foo"
std::string_view lastComponent(std::string_view path);

// "/usr/bin/foo" -> "/usr/bin"; "/" for what stands in the root; empty for a bare name
std::string_view directoryOf(std::string_view path);

// "foo.py" -> "foo"; only the endings that scripts have, because "org.example.Player" has no ending
std::string_view withoutScriptEnding(std::string_view name);

// Whether the program (a path or a name) is there to run other people's scripts: a shell, python3.11, java. What such
// a process does says nothing about the interpreter.
bool isInterpreter(std::string_view program);

// Whether the program starts another one in its place or elsewhere, and is never the application itself: flatpak,
// snap, xdg-open.
bool isLauncher(std::string_view program);

// The script, module or class that an interpreter was told to run; absent when it runs code from its command line or
// its standard input. `arguments` start with the name that the interpreter was called by.
std::optional<std::string> scriptOf(std::string_view interpreter, const std::vector<std::string>& arguments);

// Drops what stands before the program itself: `env NAME=value`, `nohup` and their like.
std::vector<std::string> withoutPrefixes(std::vector<std::string> arguments);

// Whether programs that have nothing to do with each other stand in this directory: /usr/bin, /usr/lib, ~/.local/bin.
bool isSharedDirectory(std::string_view directory);

}  // namespace tollvane
