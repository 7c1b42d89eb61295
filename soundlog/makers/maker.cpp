#include "soundlog/makers/maker.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/linux/kernel/program_line.h"

namespace tollvane::soundlog {
namespace {

// No real process has more ancestors. If processes change while they are read, there could seem to be no end.
constexpr std::size_t deepest = 64;

// The kernel keeps this many bytes of a program's name.
constexpr std::size_t commandLength = 15;

// Whether `binary` is the program of `pid`. A client in a sandbox counts processes from 1, so the number that it
// declares may be that of an unrelated process of ours.
bool agrees(const ProcFs& processes, Pid pid, std::string_view binary) {
  const std::string_view name = lastComponent(binary);
  if (name.empty()) return false;
  const auto executable = processes.executable(pid);
  if (executable && lastComponent(*executable) == name) return true;
  const std::string command = processes.command(pid);
  return command == name || (name.size() > commandLength && command == name.substr(0, commandLength));
}

// Notification services tell their scripts in such variables what they run for. Sources: dunst(5), swaync(5).
std::optional<NotificationWords> notificationWords(const ProcFs& processes, Pid pid) {
  constexpr std::array<std::string_view, 6> variables = {
      "DUNST_APP_NAME",  "DUNST_DESKTOP_ENTRY",  "DUNST_SUMMARY",
      "SWAYNC_APP_NAME", "SWAYNC_DESKTOP_ENTRY", "SWAYNC_SUMMARY",
  };
  auto values = processes.environment(pid, variables);
  for (std::size_t i = 0; i + 2 < values.size(); i += 3) {
    if (values[i] || values[i + 1] || values[i + 2])
      return NotificationWords{values[i].value_or(""), values[i + 1].value_or("")};
  }
  return std::nullopt;
}

// The kernel's short name of speech-dispatcher.
constexpr std::string_view speechService = "speech-dispatch";
constexpr std::string_view speechModules = "speech-dispatcher-modules";
constexpr std::string_view muteModule = "sd_dummy";

// A reader looks at a process and seven ancestors.
constexpr std::size_t mostStillRunning = 8;

template <typename Range>
bool contains(const Range& range, std::string_view text) {
  return std::find(std::begin(range), std::end(range), text) != std::end(range);
}

// Programs that start another one for a script and wait for it.
bool onlyWaits(std::string_view program) {
  constexpr std::array<std::string_view, 14> names = {"timeout", "sudo",    "doas",   "su",     "runuser",
                                                      "flock",   "xargs",   "find",   "script", "watch",
                                                      "time",    "chronic", "strace", "unshare"};
  return contains(names, lastComponent(program));
}

// These scripts start a whole session. That a program was started by one of them says nothing about it.
bool startsSession(std::string_view script) {
  constexpr std::array<std::string_view, 9> names = {"xinitrc",   ".xinitrc", "Xsession",   ".xsession",  "xsession",
                                                     ".Xclients", "startx",   "startxfce4", "startplasma"};
  return contains(names, script);
}

// Whether an interpreter that was given no script was given code: sh -c CODE.
bool runsCode(const std::vector<std::string>& arguments) {
  return arguments.size() > 2 && arguments[1].starts_with('-') && arguments[1].find_first_of("ce") != std::string::npos;
}

bool isSpeechModule(const std::optional<std::string>& executable) {
  return executable && lastComponent(directoryOf(*executable)) == speechModules;
}

}  // namespace

std::optional<Pid> Makers::believedPid(const ClientClaims& claims) const {
  if (claims.checkedPid) return claims.checkedPid;
  if (claims.declaredPid && agrees(processes_, *claims.declaredPid, claims.binary)) return claims.declaredPid;
  return std::nullopt;
}

Maker Makers::remember(const ClientClaims& claims) const {
  Maker maker;
  const std::optional<Pid> pid = believedPid(claims);
  for (Pid each = pid.value_or(0); each >= 2 && maker.chain.size() < deepest;) {
    const auto status = processes_.status(each);
    if (!status) break;
    maker.chain.push_back({each, status->startTime});
    if (status->command == speechService) maker.speech = Speech::speaker;
    each = status->parent;
  }
  if (maker.known()) {
    maker.name = processes_.programName(*pid);
    maker.cgroup = processes_.cgroup(*pid);
    maker.playsFor = notificationWords(processes_, *pid);
    maker.script = scriptBehind(maker.chain);
    if (isSpeechModule(processes_.executable(*pid))) maker.speech = Speech::speaker;
    if (maker.speech != Speech::none && maker.name == muteModule) maker.speech = Speech::mute;
  }
  if (maker.name.empty()) maker.name = nameByClaims(claims);
  return maker;
}

// A client in a sandbox declares process numbers that mean other processes here. It can only be credited by its
// application's name, so this must be the name that the desktop shows.
std::string Makers::nameByClaims(const ClientClaims& claims) const {
  if (!claims.sandboxId.empty() && nameOfApplication_) {
    if (std::string name = nameOfApplication_(claims.sandboxId); !name.empty()) return name;
  }
  return claims.name.empty() ? std::string(lastComponent(claims.binary)) : claims.name;
}

// The nearest ancestor that runs a script, unless a program of another kind stands between: that one would be the tool.
std::string Makers::scriptBehind(const std::vector<ProcessKey>& chain) const {
  for (std::size_t i = 1; i < chain.size(); ++i) {
    // The kernel hides the executable of a process with other rights, such as sudo.
    const auto program = processes_.executable(chain[i].pid).value_or(processes_.command(chain[i].pid));
    if (!isInterpreter(program)) {
      if (!onlyWaits(program)) return {};
      continue;
    }
    const std::vector<std::string> arguments = processes_.arguments(chain[i].pid);
    if (const auto script = scriptOf(program, arguments)) {
      const std::string_view name = lastComponent(*script);
      return startsSession(name) ? std::string() : std::string(name);
    }
    if (!runsCode(arguments)) return {};  // a person types its commands
  }
  return {};
}

std::vector<Pid> Makers::stillRunning(const Maker& maker) const {
  std::vector<Pid> alive;
  for (const ProcessKey& process : maker.chain) {
    if (alive.size() >= mostStillRunning) break;
    if (key(process.pid) == process) alive.push_back(process.pid);
  }
  return alive;
}

std::optional<ProcessKey> Makers::key(Pid pid) const {
  const auto status = processes_.status(pid);
  if (!status) return std::nullopt;
  return ProcessKey{pid, status->startTime};
}

}  // namespace tollvane::soundlog
