#include "platform/linux/apps/applications.h"

#include <glib.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/linux/kernel/program_line.h"
#include "platform/posix/posix_files.h"

namespace tollvane {
namespace {

constexpr std::size_t longestSandboxInfo = 64 * 1024;

// The application's name in its sandbox's description; the format is a key file, see flatpak-metadata(5).
std::string sandboxName(std::string_view text) {
  struct FreeKeyFile {
    void operator()(GKeyFile* file) const { g_key_file_free(file); }
  };
  const std::unique_ptr<GKeyFile, FreeKeyFile> file(g_key_file_new());
  if (!g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr)) return {};
  gchar* const name = g_key_file_get_string(file.get(), "Application", "name", nullptr);
  std::string result = name == nullptr ? std::string() : std::string(name);
  g_free(name);
  return result;
}

// These programs are made to start others, which then run in their unit.
bool startsOthers(const DesktopEntry& entry) { return entry.isTerminalEmulator || entry.isFileManager; }

}  // namespace

std::optional<Ownership> Applications::of(Pid pid, Wanted wanted) const {
  entries_.refresh();
  RunningProgram first = program(pid);
  return of(first, wanted);
}

std::optional<Ownership> Applications::of(RunningProgram& program, Wanted wanted) const {
  constexpr Pid init = 1;
  const Pid pid = program.pid();
  if (pid <= init || !program.isAlive()) return std::nullopt;
  const std::string cgroup = processes_.cgroup(pid);
  Ownership application = identify(program, applicationUnit(cgroup));
  if (!application.isRegular()) lookForWindows(pid, application);
  if (wanted == Wanted::regular && !application.isRegular()) return std::nullopt;
  if (application.entry != nullptr || !application.id.empty()) return application;
  if (background_ != nullptr) application.backgroundName = background_->nameOf(program, cgroup, application.hasWindow);
  if (!application.hasWindow && application.backgroundName.empty()) return std::nullopt;
  return application;
}

Ownership Applications::identify(RunningProgram& program, const UnitName& unit) const {
  const Pid pid = program.pid();
  if (auto sandboxed = fromSandbox(pid, unit)) {
    // A program that was started by a snap without confinement runs in the snap's scope, too.
    if (unit.snapInstance.empty() || sandboxed->entry == nullptr || isTrusted(sandboxed->entry, program))
      return std::move(*sandboxed);
  }
  DesktopEntries::Entry entry = launchedEntry(pid);
  if (entry == nullptr) {
    entry = unitEntry(unit);
    if (entry != nullptr && !unit.isOwnService && !isTrusted(entry, program)) entry = nullptr;
  }
  if (entry == nullptr) entry = program.entry();
  if (entry == nullptr || entry->isInterpretersOwn()) return {};
  return {entry, entry->id, "", "", false};
}

std::optional<Ownership> Applications::fromSandbox(Pid pid, const UnitName& unit) const {
  std::string id = unit.flatpakId;
  const std::string info = processes_.root().native() + "/" + std::to_string(pid) + "/root/.flatpak-info";
  if (const auto text = readPlainFile(info, longestSandboxInfo)) {
    if (auto name = sandboxName(*text); !name.empty()) id = sanitized(name);
  }
  if (!id.empty()) {
    DesktopEntries::Entry entry = entries_.withId(id);
    if (entry == nullptr) entry = entries_.withFlatpakId(id);
    return Ownership{entry, entry ? entry->id : id, "", "", false};
  }
  if (unit.snapInstance.empty()) return std::nullopt;
  id = sanitized(unit.snapInstance + "_" + unit.snapApplication);
  DesktopEntries::Entry entry = entries_.withId(id);
  if (entry == nullptr) entry = entries_.withSnapInstance(unit.snapInstance);
  return Ownership{entry, entry ? entry->id : id, "", "", false};
}

DesktopEntries::Entry Applications::launchedEntry(Pid pid) const {
  // Children inherit both variables: only the process whose number this one has was started by the entry itself.
  const auto launched = processes_.environment(pid, "GIO_LAUNCHED_DESKTOP_FILE_PID");
  if (launched != std::to_string(pid)) return nullptr;
  const auto file = processes_.environment(pid, "GIO_LAUNCHED_DESKTOP_FILE");
  if (!file) return nullptr;
  auto entry = entries_.withPath(*file);
  if (entry == nullptr && file->ends_with(desktopFileEnding)) entry = entries_.withId(lastComponent(*file));
  // For an entry that runs in a terminal, a terminal was started, which is an application of its own.
  return entry != nullptr && entry->terminal ? nullptr : entry;
}

DesktopEntries::Entry Applications::unitEntry(const UnitName& unit) const {
  for (const std::string& id : unit.desktopIds)
    if (auto entry = entries_.withId(id)) return entry;
  return nullptr;
}

// Whether the program belongs to its unit's entry. A browser in which an application opened a link runs in that
// application's unit until it ends, but is an application of its own.
bool Applications::isTrusted(const DesktopEntries::Entry& unitEntry, RunningProgram& program) const {
  const auto& own = program.entries();
  if (std::find(own.begin(), own.end(), unitEntry) != own.end()) return true;
  if (startsOthers(*unitEntry) || unitEntry->terminal) return false;
  const auto entry = program.entry();
  return entry == nullptr || !(entry->isWebBrowser || startsOthers(*entry));
}

void Applications::lookForWindows(Pid pid, Ownership& application) const {
  const auto& all = windows_.normalWindows();
  const auto window = std::find_if(all.begin(), all.end(), [&](const X11Window& each) { return each.pid == pid; });
  if (window == all.end()) return;
  application.hasWindow = true;
  application.windowClass = window->windowClass.empty() ? window->instance : window->windowClass;
  if (application.entry != nullptr || !application.id.empty()) return;
  for (const std::string& name : {window->windowClass, window->instance}) {
    if (name.empty()) continue;
    const auto& found = entries_.programs().ofWindowClass(name);
    if (found.empty()) continue;
    application.entry = found.front();
    application.id = found.front()->id;
    return;
  }
}

std::string Applications::nameOf(Pid pid, const Ownership& application) const {
  if (application.entry != nullptr && !application.entry->name.empty()) return application.entry->name;
  if (!application.id.empty()) {
    const auto last = application.id.find_last_of("._/");
    const std::string name = last == std::string::npos ? application.id : application.id.substr(last + 1);
    return sanitized(name.empty() ? application.id : name);
  }
  if (!application.backgroundName.empty()) return application.backgroundName;
  if (!application.windowClass.empty() && !isInterpreter(application.windowClass))
    return sanitized(application.windowClass);
  return sanitized(processes_.programName(pid));
}

}  // namespace tollvane
