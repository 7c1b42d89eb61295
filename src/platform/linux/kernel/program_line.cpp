#include "platform/linux/kernel/program_line.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "support/ascii.h"

namespace tollvane {

namespace {

// How an interpreter reads its own options. `code`, `module` and `value` are letters of short options: -c CODE, -m
// MODULE, -W VALUE. `longValues` are options, between blanks, whose value is the next argument.
struct Interpreter {
  std::string_view name;  // a version after it ("3.11") does not matter
  std::string_view code;
  std::string_view module;
  std::string_view value;
  std::string_view longValues;
};

constexpr std::string_view shellLong = " --rcfile --init-file --init-command ";
constexpr std::string_view nodeLong = " --require --import --loader --experimental-loader --conditions ";
constexpr std::string_view javaLong =
    " -cp -classpath --class-path -p --module-path --add-modules --add-opens --add-exports --add-reads "
    "--upgrade-module-path ";

constexpr Interpreter interpreters[] = {
    {"python", "c", "m", "WXQ", " --check-hash-based-pycs "},
    {"pypy", "c", "m", "WXQ", ""},
    {"perl", "eE", "", "I", ""},
    {"ruby", "e", "", "IrCE", ""},
    {"sh", "c", "", "oO", shellLong},
    {"bash", "c", "", "oO", shellLong},
    {"dash", "c", "", "o", ""},
    {"zsh", "c", "", "o", ""},
    {"ksh", "c", "", "o", ""},
    {"mksh", "c", "", "o", ""},
    {"fish", "c", "", "C", shellLong},
    {"node", "ep", "", "rC", nodeLong},
    {"nodejs", "ep", "", "rC", nodeLong},
    {"electron", "ep", "", "r", nodeLong},
    {"deno", "", "", "c", ""},
    {"bun", "ep", "", "r", ""},
    {"java", "", "", "", javaLong},
    {"gjs", "c", "", "I", " --include-path --coverage-prefix --coverage-output --profile "},
    {"gjs-console", "c", "", "I", " --include-path --coverage-prefix --coverage-output --profile "},
    {"mono", "", "", "", " --config "},
    {"mono-sgen", "", "", "", " --config "},
    {"dotnet", "", "", "", " --additionalprobingpath --depsfile --runtimeconfig "},
    {"lua", "e", "", "l", ""},
    {"luajit", "e", "", "lj", ""},
    {"php", "rBRE", "", "cdz", ""},
    {"tclsh", "", "", "", " -encoding "},
    {"wish", "", "", "", " -encoding -display -geometry -name -colormap -visual -use "},
    {"guile", "c", "", "lLCex", ""},
    {"Rscript", "e", "", "", ""},
    {"wine", "", "", "", ""},
    {"wine-preloader", "", "", "", ""},
    {"wine64", "", "", "", ""},
    {"wine64-preloader", "", "", "", ""},
};

constexpr std::string_view launchers[] = {
    "flatpak",   "snap",         "bwrap",       "xdg-open",
    "gio",       "gapplication", "gtk-launch",  "exo-open",
    "kde-open",  "kioclient",    "dbus-launch", "dbus-run-session",
    "dbus-send", "gdbus",        "busctl",      "pkexec",
    "sudo",      "su",           "systemd-run", "x-terminal-emulator",
    "busybox",   "toybox",       "firejail",    "flatpak-spawn",
};

constexpr std::string_view prefixes[] = {"nohup", "setsid", "prime-run", "gamemoderun", "mangohud"};

constexpr std::string_view scriptEndings[] = {".py",  ".pyw", ".pl",  ".rb",  ".sh",  ".js",  ".mjs",
                                              ".jar", ".exe", ".dll", ".lua", ".php", ".tcl", ".bin"};

template <typename Range>
bool contains(const Range& range, std::string_view text) {
  return std::find(std::begin(range), std::end(range), text) != std::end(range);
}

bool hasWord(std::string_view words, std::string_view word) {
  const auto at = words.find(word);
  return at != std::string_view::npos && at > 0 && words[at - 1] == ' ' && at + word.size() < words.size() &&
         words[at + word.size()] == ' ';
}

const Interpreter* findInterpreter(std::string_view program) {
  const std::string_view name = lastComponent(program);
  std::string_view plain = name.substr(0, name.find_last_not_of("0123456789.") + 1);
  // Debian's name is perl5.36-x86_64-linux-gnu.
  if (name.starts_with("perl5")) plain = "perl";
  for (const Interpreter& row : interpreters) {
    if (row.name == name || row.name == plain) return &row;
  }
  return nullptr;
}

// Finds a Windows program. The loader replaces its own arguments by the program's, so it may be the very first one.
std::optional<std::string> windowsProgram(const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    std::string lower = ascii::lowerCase(argument);
    if (lower.ends_with(".exe") || lower.ends_with(".lnk")) {
      std::replace(lower.begin(), lower.end(), '\\', '/');
      return lower;
    }
  }
  return std::nullopt;
}

enum class Option { flag, takesNext, code, moduleNext, moduleHere };

Option readOption(const Interpreter& row, std::string_view option) {
  if (hasWord(row.longValues, option)) return Option::takesNext;
  if (option.starts_with("--") || row.name == "java") return Option::flag;
  for (std::size_t i = 1; i < option.size(); ++i) {
    const bool last = i + 1 == option.size();
    if (row.code.find(option[i]) != std::string_view::npos) return Option::code;
    if (row.module.find(option[i]) != std::string_view::npos) return last ? Option::moduleNext : Option::moduleHere;
    if (row.value.find(option[i]) != std::string_view::npos) return last ? Option::takesNext : Option::flag;
  }
  return Option::flag;
}

bool isLongCodeOption(std::string_view option) {
  return option == "--eval" || option == "--print" || option == "--command" || option.starts_with("--eval=") ||
         option.starts_with("--command=");
}

}  // namespace

std::string_view lastComponent(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view directoryOf(std::string_view path) {
  const auto slash = path.rfind('/');
  if (slash == std::string_view::npos) return {};
  return path.substr(0, std::max<std::size_t>(slash, 1));
}

std::string_view withoutScriptEnding(std::string_view name) {
  for (const std::string_view ending : scriptEndings) {
    if (name.size() > ending.size() && name.ends_with(ending)) return name.substr(0, name.size() - ending.size());
  }
  return name;
}

bool isInterpreter(std::string_view program) { return findInterpreter(program) != nullptr; }

bool isLauncher(std::string_view program) { return contains(launchers, lastComponent(program)); }

std::optional<std::string> scriptOf(std::string_view interpreter, const std::vector<std::string>& arguments) {
  const Interpreter* row = findInterpreter(interpreter);
  if (row == nullptr) return std::nullopt;
  if (row->name.starts_with("wine")) return windowsProgram(arguments);
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const std::string_view argument = arguments[i];
    const bool hasNext = i + 1 < arguments.size();
    if (argument == "--") return hasNext ? std::optional(arguments[i + 1]) : std::nullopt;
    if (argument.empty() || argument == "-" || isLongCodeOption(argument)) return std::nullopt;
    if (argument[0] != '-' && argument[0] != '+') return arguments[i];
    switch (readOption(*row, argument)) {
      case Option::flag:
        break;
      case Option::takesNext:
        ++i;
        break;
      case Option::code:
        return std::nullopt;
      case Option::moduleNext:
        return hasNext ? std::optional(arguments[i + 1]) : std::nullopt;
      case Option::moduleHere:
        return std::string(argument.substr(argument.find_first_of(row->module) + 1));
    }
  }
  return std::nullopt;
}

std::vector<std::string> withoutPrefixes(std::vector<std::string> arguments) {
  auto program = arguments.begin();
  while (program != arguments.end()) {
    const std::string_view name = lastComponent(*program);
    if (contains(prefixes, name)) {
      ++program;
      continue;
    }
    if (name != "env") break;
    ++program;
    while (program != arguments.end() && (program->starts_with('-') || program->find('=') != std::string::npos)) {
      const bool takesNext = *program == "-u" || *program == "-C" || *program == "--unset" || *program == "--chdir";
      ++program;
      if (takesNext && program != arguments.end()) ++program;
    }
  }
  arguments.erase(arguments.begin(), program);
  return arguments;
}

bool isSharedDirectory(std::string_view directory) {
  if (directory.empty() || directory == "/" || directory == "/opt" || directory == "/tmp" || directory == "/usr/share")
    return true;
  if (const char* home = std::getenv("HOME"); home != nullptr && directory == home) return true;
  const std::string_view name = lastComponent(directory);
  constexpr std::array<std::string_view, 7> shared = {"bin", "sbin", "games", "lib", "lib64", "libexec", "lib32"};
  // For example /usr/lib/x86_64-linux-gnu.
  if (name.find("-linux-gnu") != std::string_view::npos) return true;
  // A directory of this name inside an application's own tree (/opt/example/bin) belongs to that application.
  const bool insideOneTree =
      (directory.starts_with("/opt/") || directory.starts_with("/usr/lib/") || directory.starts_with("/usr/share/")) &&
      std::count(directory.begin(), directory.end(), '/') > 2;
  return contains(shared, name) && !insideOneTree;
}

}  // namespace tollvane
