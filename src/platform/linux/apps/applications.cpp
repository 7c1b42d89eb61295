#include "platform/linux/apps/applications.h"

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <utility>

#include "platform/linux/apps/file_bytes.h"
#include "platform/linux/apps/program_line.h"

namespace tollvane {

namespace {

const ProgramIndex::Entries kNone;

constexpr std::size_t kLongestSandboxInfo = 64 * 1024;
constexpr std::size_t kMostExecutables = 4096;
constexpr std::chrono::milliseconds kSharedFor{100};

// The name in a sandbox's description of itself; the format is a key file, see flatpak-metadata(5).
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

// Some programs write all of their arguments into the first one.
std::string_view firstWord(std::string_view argument) { return argument.substr(0, argument.find(" -")); }

bool contains(const ProgramIndex::Entries& entries, const DesktopEntries::Entry& entry) {
  return std::find(entries.begin(), entries.end(), entry) != entries.end();
}

bool hasIdOf(const ProgramIndex::Entries& entries, const DesktopEntries::Entry& entry) {
  return std::any_of(entries.begin(), entries.end(), [&](const auto& each) { return each->id == entry->id; });
}

// Run by Flatpak or Snap, with the executable in a file system of its own.
bool isContained(const DesktopEntry& entry) {
  if (!entry.flatpakId.empty() || !entry.snapInstance.empty()) return true;
  const std::string_view program = entry.command.empty() ? std::string_view() : lastComponent(entry.command.front());
  return program == "flatpak" || program == "snap";
}

bool standsInContainer(const std::string& executable) {
  for (const std::string_view root : {"/app/", "/snap/", "/var/lib/snapd/snap/"}) {
    if (executable.starts_with(root)) return true;
  }
  return ::access(executable.c_str(), F_OK) != 0;
}

// Whether the file is the program itself, and not a script that may start a program of any name.
bool isBinary(const std::string& program) {
  constexpr std::string_view kElf = "\177ELF";
  return !program.empty() && readKernelFile(program, kElf.size()) == kElf;
}

// Starting other programs is what these are for, and what they start runs in their unit.
bool startsOthers(const DesktopEntry& entry) { return entry.isTerminalEmulator || entry.isFileManager; }

}  // namespace

struct Applications::Program {
  Program(const Applications& applications, Pid process) : owner(applications), pid(process) {}

  // What has ended has no executable any more, even while its parent has not yet taken note.
  bool isAlive() {
    if (executable()) return true;
    const auto status = owner.processes_.status(pid);
    return status && status->state != 'Z' && status->state != 'X';
  }

  const std::optional<std::string>& executable() {
    if (!executable_) executable_.emplace(owner.processes_.executable(pid));
    return *executable_;
  }

  const std::vector<std::string>& arguments() {
    if (!arguments_) arguments_ = owner.processes_.arguments(pid);
    return *arguments_;
  }

  // All entries whose program this is, the best first.
  const ProgramIndex::Entries& entries() {
    if (entries_ == nullptr) entries_ = &find();
    return *entries_;
  }

  // The one among them that this process was started by, as far as its command line can tell.
  DesktopEntries::Entry entry() {
    DesktopEntries::Entry fitting;
    for (const auto& candidate : entries()) {
      if (!isReachedBy(*candidate) || !wasGiven(*candidate)) continue;
      if (fitting == nullptr) fitting = candidate;
      if (!isAmbiguous()) break;
      if (isCalled(*candidate)) return candidate;
    }
    return fitting;
  }

  const Applications& owner;
  const Pid pid;

 private:
  const ProgramIndex::Entries& find() {
    if (!executable()) {
      // The kernel hides the executable of a process that has locked itself up. Its own word must do.
      if (arguments().empty() || !arguments().front().starts_with('/')) return kNone;
      return *owner.executable(std::string(firstWord(arguments().front()))).entries;
    }
    const Executable& known = owner.executable(*executable());
    if (!known.runsScripts) return *known.entries;
    const auto script = scriptOf(*executable(), arguments());
    if (!script) return kNone;
    auto file = script->ends_with(".exe") ? std::nullopt : owner.processes_.fileNamed(pid, *script);
    // A script may be gone, or stand where only the process itself can see it.
    if (!file && script->starts_with('/')) file = *script;
    if (!file) return owner.entries_.programs().ofScript(std::string(lastComponent(*script)));
    const auto& direct = owner.entries_.programs().ofScript(*file);
    if (!direct.empty()) return direct;
    return owner.entries_.programs().ofScript(realPath(*file).value_or(*file));
  }

  // One program can be several, told apart by the name that it is called by.
  bool isAmbiguous() {
    const auto& all = entries();
    return std::any_of(all.begin(), all.end(),
                       [&](const auto& entry) { return entry->program != all.front()->program; });
  }

  bool isCalled(const DesktopEntry& candidate) {
    return !arguments().empty() && !candidate.program.empty() &&
           lastComponent(firstWord(arguments().front())) == lastComponent(candidate.program);
  }

  // Among the system's tools one program hides behind many names, and an entry for one of the names (a player) has
  // nothing to do with the others (a recorder).
  bool isReachedBy(const DesktopEntry& candidate) {
    if (candidate.realProgram.empty() || candidate.realProgram != executable()) return true;
    if (lastComponent(candidate.program) == lastComponent(candidate.realProgram)) return true;
    if (!isSharedDirectory(directoryOf(candidate.realProgram))) return true;
    // For a moment after it has started, a program has no arguments yet. Then it is nobody's, rather than the wrong
    // one's.
    return isCalled(candidate);
  }

  // A document or a page that the entry opens: an entry for one radio station does not own every player.
  bool wasGiven(const DesktopEntry& candidate) {
    const std::size_t skip = candidate.script.empty() ? 1 : 2;
    for (std::size_t i = skip; i < candidate.command.size(); ++i) {
      const std::string& argument = candidate.command[i];
      if (argument.empty() || argument.front() == '-') continue;
      // What follows an option may be its value, which the program is free to take out of its command line.
      if (candidate.command[i - 1].starts_with('-')) continue;
      if (std::find(arguments().begin(), arguments().end(), argument) == arguments().end()) return false;
    }
    return true;
  }

  std::optional<std::optional<std::string>> executable_;
  std::optional<std::vector<std::string>> arguments_;
  const ProgramIndex::Entries* entries_ = nullptr;
};

Applications::Applications(const ProcFs& processes, DesktopEntries& entries, X11Windows& windows, const Clock* sharing)
    : processes_(processes), entries_(entries), windows_(windows), sharing_(sharing) {}

std::optional<Ownership> Applications::of(Pid pid) const {
  constexpr Pid kInit = 1;
  if (pid <= kInit) return std::nullopt;
  Program program(*this, pid);
  if (!program.isAlive()) return std::nullopt;
  entries_.refresh();
  Ownership application = identify(pid, program);
  if (application.entry != nullptr && !entries_.isFresh(*application.entry)) {
    entries_.distrust();
    entries_.refresh();
    Program again(*this, pid);
    application = identify(pid, again);
  }
  if (!application.isRegular()) lookForWindows(pid, application);
  if (application.entry == nullptr && application.id.empty() && !application.hasWindow) return std::nullopt;
  return application;
}

std::optional<std::string> Applications::desktopIdOf(Pid pid) const {
  auto application = of(pid);
  if (!application || application->id.empty()) return std::nullopt;
  return std::move(application->id);
}

Ownership Applications::identify(Pid pid, Program& program) const {
  const UnitName unit = applicationUnit(processes_.cgroup(pid));
  if (auto sandboxed = fromSandbox(pid, unit)) {
    // What a snap without confinement starts runs in the snap's scope, too.
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
  return {entry, entry->id, "", false};
}

std::optional<Ownership> Applications::fromSandbox(Pid pid, const UnitName& unit) const {
  std::string id = unit.flatpakId;
  const std::string info = processes_.root().native() + "/" + std::to_string(pid) + "/root/.flatpak-info";
  if (const auto text = readPlainFile(info, kLongestSandboxInfo)) {
    if (auto name = sandboxName(*text); !name.empty()) id = sanitized(name);
  }
  if (!id.empty()) {
    DesktopEntries::Entry entry = entries_.withId(id);
    if (entry == nullptr) entry = entries_.withFlatpakId(id);
    return Ownership{entry, entry ? entry->id : id, "", false};
  }
  if (unit.snapInstance.empty()) return std::nullopt;
  id = sanitized(unit.snapInstance + "_" + unit.snapApplication);
  DesktopEntries::Entry entry = entries_.withId(id);
  if (entry == nullptr) entry = entries_.withSnapInstance(unit.snapInstance);
  return Ownership{entry, entry ? entry->id : id, "", false};
}

DesktopEntries::Entry Applications::launchedEntry(Pid pid) const {
  // Children inherit both variables: only the process that the second one names was started by the entry itself.
  const auto launched = processes_.environment(pid, "GIO_LAUNCHED_DESKTOP_FILE_PID");
  if (launched != std::to_string(pid)) return nullptr;
  const auto file = processes_.environment(pid, "GIO_LAUNCHED_DESKTOP_FILE");
  if (!file) return nullptr;
  auto entry = entries_.withPath(*file);
  if (entry == nullptr && file->ends_with(".desktop")) entry = entries_.withId(lastComponent(*file));
  // What is to run in a terminal is started by starting a terminal, and that one is still itself.
  return entry != nullptr && entry->terminal ? nullptr : entry;
}

DesktopEntries::Entry Applications::unitEntry(const UnitName& unit) const {
  for (const std::string& id : unit.desktopIds) {
    if (auto entry = entries_.withId(id)) return entry;
  }
  return nullptr;
}

// A browser that an application opened a link in runs in that application's unit until it ends, and is still itself.
bool Applications::isTrusted(const DesktopEntries::Entry& unitEntry, Program& program) const {
  if (contains(program.entries(), unitEntry)) return true;
  if (startsOthers(*unitEntry) || unitEntry->terminal) return false;
  const auto own = program.entry();
  return own == nullptr || !(own->isWebBrowser || startsOthers(*own));
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
  if (!application.windowClass.empty() && !isInterpreter(application.windowClass))
    return sanitized(application.windowClass);
  return sanitized(processes_.programName(pid));
}

std::optional<Applications::Process> Applications::process(Pid pid) const {
  // Whose it is comes after everything that is asked more cheaply.
  if (!processes_.isOwn(pid)) return std::nullopt;
  auto application = of(pid);
  const auto status = application ? processes_.status(pid) : std::nullopt;
  if (!status) return std::nullopt;
  return Process{pid, status->startTime, std::move(*application)};
}

std::vector<Applications::Process> Applications::processes() const {
  std::vector<Process> found;
  for (const Pid pid : processes_.all()) {
    if (auto belonging = process(pid)) found.push_back(std::move(*belonging));
  }
  return found;
}

const std::vector<Applications::Seen>& Applications::everybody() const {
  if (sharing_ != nullptr && sharing_->steadyNow() < everybodyUntil_) return everybody_;
  everybody_.clear();
  for (const Pid pid : processes_.all()) {
    auto executable = processes_.executable(pid);
    // The kernel's own threads and what has ended have none, and belong to nobody.
    if (!executable && errno == ENOENT) continue;
    everybody_.push_back({pid, std::move(executable)});
  }
  if (sharing_ != nullptr) everybodyUntil_ = sharing_->steadyNow() + kSharedFor;
  return everybody_;
}

// Most processes are ruled out by their executable alone: looking closely at each would take five times as long.
std::vector<Applications::Process> Applications::processesOf(const ProgramIndex::Entries& wanted,
                                                             bool knownPrograms) const {
  entries_.refresh();
  Search search{wanted, knownPrograms, false, {}};
  search.contained = std::any_of(wanted.begin(), wanted.end(), [](const auto& entry) { return isContained(*entry); });
  for (const X11Window& window : windows_.normalWindows()) search.withWindows.push_back(window.pid);
  std::vector<Process> found;
  // Compared by their ids: the entries themselves may be read again on the way.
  const auto collect = [&](auto mayBelong) {
    for (const Seen& each : everybody()) {
      if (!mayBelong(each)) continue;
      auto belonging = process(each.pid);
      if (belonging && belonging->application.entry != nullptr && hasIdOf(wanted, belonging->application.entry))
        found.push_back(std::move(*belonging));
    }
  };
  collect([&](const Seen& each) { return mayBelong(each, search); });
  const bool sure = knownPrograms || std::all_of(wanted.begin(), wanted.end(), [](const auto& entry) {
                      return isContained(*entry) || isBinary(entry->realProgram);
                    });
  if (found.empty() && !sure) collect([](const Seen&) { return true; });
  return found;
}

bool Applications::mayBelong(const Seen& process, const Search& search) const {
  const auto& windows = search.withWindows;
  if (std::find(windows.begin(), windows.end(), process.pid) != windows.end()) return true;
  const auto& path = process.executable;
  if (!path) return true;
  Executable& known = executable(*path);
  if (known.runsScripts) return !search.knownPrograms;
  if (search.contained) {
    if (!known.inContainer) known.inContainer = isLauncher(*path) || standsInContainer(*path);
    if (*known.inContainer) return true;
  }
  return std::any_of(known.entries->begin(), known.entries->end(),
                     [&](const auto& entry) { return hasIdOf(search.wanted, entry); });
}

Applications::Executable& Applications::executable(const std::string& path) const {
  if (generation_ != entries_.generation() || executables_.size() >= kMostExecutables) {
    executables_.clear();
    generation_ = entries_.generation();
  }
  const auto [place, added] = executables_.try_emplace(path);
  if (added) {
    place->second.runsScripts = isInterpreter(path);
    const bool own = !path.empty() && !place->second.runsScripts && !isLauncher(path);
    place->second.entries = own ? &entries_.programs().ofExecutable(path) : &kNone;
  }
  return place->second;
}

}  // namespace tollvane
