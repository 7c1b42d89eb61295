#include "platform/linux/workspace/browser_programs.h"

#include <algorithm>
#include <chrono>
#include <string>

namespace tollvane {
namespace {

constexpr std::chrono::milliseconds sharedFor{100};

bool startsAWebApplication(const DesktopEntry& entry) {
  return std::any_of(entry.command.begin(), entry.command.end(), [](const std::string& argument) {
    return argument.starts_with("--app=") || argument.starts_with("--app-id=");
  });
}

}  // namespace

const BrowserEdition* BrowserPrograms::editionOf(Pid pid) const {
  RunningProgram program = applications_.program(pid);
  return editionOf(program);
}

const BrowserEdition* BrowserPrograms::editionOf(RunningProgram& program) const {
  const auto& executable = program.executable();
  const BrowserEdition* const edition = executable ? editionOfProgram(*executable) : nullptr;
  return edition != nullptr && applications_.processes().isOwn(program.pid()) ? edition : nullptr;
}

const std::vector<BrowserPrograms::Running>& BrowserPrograms::look() const {
  const Instant now = clock_.steadyNow();
  if (now < runningUntil_) return running_;
  running_.clear();
  for (const Pid pid : applications_.processes().all())
    if (const BrowserEdition* const found = editionOf(pid)) running_.push_back({pid, found});
  runningUntil_ = now + sharedFor;
  return running_;
}

std::vector<Pid> BrowserPrograms::running(const BrowserEdition& edition) const {
  std::vector<Pid> pids;
  for (const Running& each : look())
    if (each.edition == &edition) pids.push_back(each.pid);
  return pids;
}

std::vector<DesktopEntries::Entry> BrowserPrograms::entries(const BrowserEdition& edition) const {
  const DesktopEntries& all = applications_.entries();
  if (generation_ != all.generation()) {
    started_.clear();
    for (const auto& entry : all.programs().all()) {
      const BrowserEdition* const found = editionOfProgram(entry->realProgram);
      if (found != nullptr && !startsAWebApplication(*entry)) started_.push_back({entry, found});
    }
    generation_ = all.generation();
  }
  std::vector<DesktopEntries::Entry> found;
  for (const Started& each : started_)
    if (each.edition == &edition) found.push_back(each.entry);
  return found;
}

}  // namespace tollvane
