#include "platform/linux/apps/background_programs.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/linux/kernel/program_line.h"
#include "platform/linux/kernel/unit_name.h"
#include "platform/posix/posix_files.h"
#include "support/ascii.h"

namespace tollvane {
namespace {

constexpr std::size_t longestUnitFile = 256 * 1024;

// Units in which much runs that has nothing to do with what the unit is for: a bus, a session, a login, a timetable.
constexpr std::array<std::string_view, 24> hosts = {
    "dbus",
    "dbus-broker",
    "at-spi-dbus-bus",
    "cron",
    "crond",
    "cronie",
    "anacron",
    "fcron",
    "atd",
    "ssh",
    "sshd",
    "getty",
    "gdm",
    "gdm3",
    "display-manager",
    "serial-getty",
    "lightdm",
    "sddm",
    "greetd",
    "lxdm",
    "tmux",
    "screen",
    "org.gnome.Shell",
    "console-getty",
};

// The unit's name without its ending and without the instance: "getty@tty1.service" -> "getty".
std::string_view stem(std::string_view unit) { return unit.substr(0, std::min(unit.find('@'), unit.rfind('.'))); }

bool isHost(std::string_view unit) {
  const std::string_view name = stem(unit);
  const bool ofSession = name.starts_with("gnome-session") || name.starts_with("plasma-") || name == "user" ||
                         name.starts_with("run-") || name.starts_with("systemd-");
  return ofSession || std::find(hosts.begin(), hosts.end(), name) != hosts.end();
}

// The unit's description; empty if none exists, or if the unit is a whole session, in which much else runs.
std::string descriptionIn(std::string_view text) {
  std::string_view description;
  bool inSection = false;
  while (!text.empty()) {
    std::string_view line = ascii::takePart(text, '\n');
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    line = line.substr(0, line.find_last_not_of(" \t\r") + 1);
    if (line.starts_with('[')) inSection = line == "[Unit]";
    if (!inSection || line.find('=') == std::string_view::npos) continue;
    std::string_view key = ascii::takePart(line, '=');
    key = key.substr(0, key.find_last_not_of(" \t") + 1);
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (key == "BindsTo" && line.find("graphical-session.target") != std::string_view::npos) return {};
    if (key == "Description") description = line;
  }
  return sanitized(description);
}

// "%i" is the instance of a unit that is made from a template, see systemd.unit(5).
std::string withInstance(const std::string& description, std::string_view unit) {
  const auto at = unit.find('@');
  const auto end = unit.rfind('.');
  const std::string_view instance = at < end ? unit.substr(at + 1, end - at - 1) : std::string_view();
  std::string result;
  for (std::size_t i = 0; i < description.size(); ++i) {
    if (description[i] != '%' || i + 1 == description.size()) {
      result += description[i];
      continue;
    }
    const char code = description[++i];
    if (code == 'i' || code == 'I') result += instance;
    if (code == '%') result += '%';
  }
  return result;
}

}  // namespace

BackgroundPrograms::BackgroundPrograms(const DesktopEntries& applications)
    : applications_(applications),
      autostart_(applications.environment(), DesktopEntries::Kind::autostart),
      busServices_(applications.environment(), DesktopEntries::Kind::busServices) {}

std::string BackgroundPrograms::nameOf(RunningProgram& program, std::string_view cgroup, bool hasWindow) const {
  if (const UnitName unit = applicationUnit(cgroup); !unit.desktopIds.empty()) {
    autostart_.refresh();
    for (const std::string& id : unit.desktopIds)
      if (const auto entry = autostart_.withId(id)) return entry->name;
  }
  if (program.runsFile()) {
    if (auto name = autostartName(program); !name.empty()) return name;
    if (auto name = busServiceName(program); !name.empty()) return name;
  }
  return hasWindow ? std::string() : unitName(cgroup);
}

// The whole command line counts: an entry that plays a sound at login does not own every player.
std::string BackgroundPrograms::autostartName(RunningProgram& program) const {
  autostart_.refresh();
  RunningProgram agent = program.among(autostart_, autostartPrograms_);
  if (agent.entries().empty()) return {};
  const auto entry = agent.entry();
  if (entry == nullptr || entry->isInterpretersOwn()) return {};
  const auto& arguments = agent.arguments();
  const bool all = std::all_of(entry->command.begin() + 1, entry->command.end(), [&](const std::string& word) {
    return std::find(arguments.begin(), arguments.end(), word) != arguments.end();
  });
  return all ? entry->name : std::string();
}

std::string BackgroundPrograms::busServiceName(RunningProgram& program) const {
  busServices_.refresh();
  RunningProgram candidate = program.among(busServices_, busPrograms_);
  const auto& services = candidate.entries();
  const auto& executable = candidate.executable();
  const auto service = std::find_if(services.begin(), services.end(), [&](const auto& each) {
    return !each->script.empty() || (executable && each->realProgram == *executable);
  });
  if (service == services.end() || (*service)->isInterpretersOwn()) return {};
  const std::string& busName = (*service)->name;
  const auto application = [&](const std::string& id) {
    const auto entry = applications_.withId(id);
    return entry == nullptr ? std::string() : entry->name;
  };
  if (auto name = application(busName); !name.empty()) return name;
  if (const std::string& unit = (*service)->unit; !unit.empty()) {
    if (auto name = described(unit, true); !name.empty()) return name;
  }
  // A part of an application has a name below the application's own, which has three components at least.
  for (auto dot = busName.rfind('.'); dot != std::string::npos; dot = dot == 0 ? dot : busName.rfind('.', dot - 1)) {
    const std::string above = busName.substr(0, dot);
    if (std::count(above.begin(), above.end(), '.') < 2) break;
    if (auto name = application(above); !name.empty()) return name;
  }
  const std::string& file = (*service)->script.empty() ? (*service)->program : (*service)->script;
  return std::string(lastComponent(file)) + " (" + busName + ")";
}

std::string BackgroundPrograms::unitName(std::string_view cgroup) const {
  const bool ofUser = cgroup.find("/user@") != std::string_view::npos;
  // A service may divide its group, but nothing of a scope within it belongs to the service.
  while (!cgroup.empty()) {
    const auto slash = cgroup.rfind('/');
    const std::string_view unit = cgroup.substr(slash == std::string_view::npos ? 0 : slash + 1);
    if (unit.ends_with(".scope") || unit.ends_with(".slice")) return {};
    if (unit.ends_with(".service")) return described(std::string(unit), ofUser);
    cgroup = cgroup.substr(0, slash == std::string_view::npos ? 0 : slash);
  }
  return {};
}

std::string BackgroundPrograms::described(const std::string& unit, bool ofUser) const {
  if (isHost(unit) || unit.find('/') != std::string::npos) return {};
  const DesktopEnvironment& environment = applications_.environment();
  std::vector<std::string> names = {unit};
  if (const auto at = unit.find('@'); at != std::string::npos)
    names.push_back(unit.substr(0, at + 1) + unit.substr(unit.rfind('.')));
  for (const std::string& folder : ofUser ? environment.userUnitFolders : environment.systemUnitFolders) {
    for (const std::string& name : names) {
      const auto text = readPlainFile(folder + "/" + name, longestUnitFile);
      if (!text) continue;
      const std::string description = withInstance(descriptionIn(*text), unit);
      return description.empty() ? std::string() : description + " (" + unit + ")";
    }
  }
  return {};
}

}  // namespace tollvane
