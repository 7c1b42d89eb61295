#include "platform/linux/apps/application_processes.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

#include "platform/linux/kernel/program_line.h"

namespace tollvane {
namespace {

constexpr std::chrono::milliseconds sharedFor{100};

// Entries are compared by their ids, because an entry may be read again during a search.
bool hasIdOf(const ProgramIndex::Entries& entries, const DesktopEntries::Entry& entry) {
  return std::any_of(entries.begin(), entries.end(), [&](const auto& each) { return each->id == entry->id; });
}

// Whether Flatpak or Snap runs the entry's program; its executable is then in a file system of its own.
bool isContained(const DesktopEntry& entry) {
  if (!entry.flatpakId.empty() || !entry.snapInstance.empty()) return true;
  const std::string_view program = entry.command.empty() ? std::string_view() : lastComponent(entry.command.front());
  return program == "flatpak" || program == "snap";
}

}  // namespace

struct ApplicationProcesses::Search {
  const ProgramIndex::Entries& wanted;
  bool knownPrograms;
  bool anyContained;
  std::vector<Pid> withWindows;
};

std::optional<ApplicationProcess> ApplicationProcesses::process(Pid pid, const Owner& owner) const {
  // Whose process it is comes first, because that is far cheaper than finding its application.
  const ProcFs& processes = applications_.processes();
  if (!processes.isOwn(pid)) return std::nullopt;
  RunningProgram program = applications_.program(pid);
  auto application = owner(program);
  const auto status = application ? processes.status(pid) : std::nullopt;
  if (!status) return std::nullopt;
  return ApplicationProcess{pid, status->startTime, std::move(*application)};
}

std::vector<ApplicationProcess> ApplicationProcesses::all(const Owner& owner) const {
  applications_.entries().refresh();
  std::vector<ApplicationProcess> found;
  for (const Pid pid : applications_.processes().all())
    if (auto belonging = process(pid, owner)) found.push_back(std::move(*belonging));
  return found;
}

const std::vector<ApplicationProcesses::Seen>& ApplicationProcesses::everybody() const {
  const Instant now = clock_.steadyNow();
  if (now < everybodyUntil_) return everybody_;
  everybody_.clear();
  const ProcFs& processes = applications_.processes();
  for (const Pid pid : processes.all()) {
    auto executable = processes.executable(pid);
    if (executable || processes.hasProgram(pid)) everybody_.push_back({pid, std::move(executable)});
  }
  everybodyUntil_ = now + sharedFor;
  return everybody_;
}

// Most processes are ruled out by their executable alone: a close look at each would take five times as long.
std::vector<ApplicationProcess> ApplicationProcesses::of(const ProgramIndex::Entries& wanted,
                                                         bool knownPrograms) const {
  applications_.entries().refresh();
  Search search{wanted, knownPrograms, false, {}};
  search.anyContained =
      std::any_of(wanted.begin(), wanted.end(), [](const auto& entry) { return isContained(*entry); });
  for (const X11Window& window : applications_.windows().normalWindows()) search.withWindows.push_back(window.pid);
  std::vector<ApplicationProcess> found;
  const Owner owner = [this](RunningProgram& program) { return applications_.of(program, Applications::Wanted::any); };
  const auto collect = [&](auto mayBelong) {
    for (const Seen& each : everybody()) {
      if (!mayBelong(each)) continue;
      auto belonging = process(each.pid, owner);
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

bool ApplicationProcesses::mayBelong(const Seen& process, const Search& search) const {
  const auto& windows = search.withWindows;
  if (std::find(windows.begin(), windows.end(), process.pid) != windows.end()) return true;
  const auto& path = process.executable;
  if (!path) return true;
  const auto& known = applications_.executables().at(*path);
  if (known.runsScripts) return !search.knownPrograms;
  if (search.anyContained && known.mayBeContained) return true;
  return std::any_of(known.entries->begin(), known.entries->end(),
                     [&](const auto& entry) { return hasIdOf(search.wanted, entry); });
}

}  // namespace tollvane
