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

Pid Makers::creditedPid(const Maker& maker) const {
  const auto alive = std::find_if(maker.chain.begin(), maker.chain.end(),
                                  [this](const ProcessKey& process) { return key(process.pid) == process; });
  return alive == maker.chain.end() ? 0 : alive->pid;
}

std::optional<ProcessKey> Makers::key(Pid pid) const {
  const auto status = processes_.status(pid);
  if (!status) return std::nullopt;
  return ProcessKey{pid, status->startTime};
}

}  // namespace tollvane::soundlog
