#include "platform/linux/apps/running_program.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <utility>

#include "platform/linux/kernel/program_line.h"
#include "platform/posix/posix_files.h"

namespace tollvane {
namespace {

constexpr std::size_t mostExecutables = 4096;

bool standsInContainer(const std::string& executable) {
  for (const std::string_view root : {"/app/", "/snap/", "/var/lib/snapd/snap/"})
    if (executable.starts_with(root)) return true;
  return ::access(executable.c_str(), F_OK) != 0;
}

// Some programs write all of their arguments into the first one.
std::string_view firstWord(std::string_view argument) { return argument.substr(0, argument.find(" -")); }

}  // namespace

const Executables::Executable& Executables::at(const std::string& path) {
  if (generation_ != entries_.generation() || known_.size() >= mostExecutables) {
    known_.clear();
    generation_ = entries_.generation();
  }
  const auto [place, added] = known_.try_emplace(path);
  Executable& executable = place->second;
  if (!added) return executable;
  executable.runsScripts = isInterpreter(path);
  const bool hasEntries = !path.empty() && !executable.runsScripts && !isLauncher(path);
  executable.entries = hasEntries ? &entries_.programs().ofExecutable(path) : &ProgramIndex::none;
  executable.mayBeContained = isLauncher(path) || standsInContainer(path);
  return executable;
}

bool isBinary(const std::string& program) {
  constexpr std::string_view elf = "\177ELF";
  return !program.empty() && readKernelFile(program, elf.size()) == elf;
}

RunningProgram RunningProgram::among(const DesktopEntries& entries, Executables& executables) {
  RunningProgram other(pid_, processes_, entries, executables);
  other.executable_ = executable();
  other.knowsExecutable_ = true;
  other.arguments_ = arguments_;
  other.script_ = script_;
  return other;
}

bool RunningProgram::runsFile() {
  return !executable() || !executables_.at(*executable()).runsScripts || script().name;
}

bool RunningProgram::isAlive() {
  if (executable()) return true;
  const auto status = processes_.status(pid_);
  return status && status->state != 'Z' && status->state != 'X';
}

const std::optional<std::string>& RunningProgram::executable() {
  if (!std::exchange(knowsExecutable_, true)) executable_ = processes_.executable(pid_);
  return executable_;
}

const std::vector<std::string>& RunningProgram::arguments() {
  if (!arguments_) arguments_ = processes_.arguments(pid_);
  return *arguments_;
}

const ProgramIndex::Entries& RunningProgram::entries() {
  if (found_ == nullptr) found_ = &find();
  return *found_;
}

DesktopEntries::Entry RunningProgram::entry() {
  DesktopEntries::Entry fitting;
  for (const auto& candidate : entries()) {
    if (!isReachedBy(*candidate) || !wasGiven(*candidate)) continue;
    if (fitting == nullptr) fitting = candidate;
    if (!isAmbiguous()) break;
    if (isCalled(*candidate)) return candidate;
  }
  return fitting;
}

const ProgramIndex::Entries& RunningProgram::find() {
  if (!executable()) {
    // The kernel hides the executable of a process that protects itself. Then its first argument must do.
    if (arguments().empty() || !arguments().front().starts_with('/')) return ProgramIndex::none;
    return *executables_.at(std::string(firstWord(arguments().front()))).entries;
  }
  const auto& known = executables_.at(*executable());
  if (!known.runsScripts) return *known.entries;
  const Script& own = script();
  if (!own.name) return ProgramIndex::none;
  if (!own.file) return entries_.programs().ofScript(std::string(lastComponent(*own.name)));
  const auto& direct = entries_.programs().ofScript(*own.file);
  if (!direct.empty()) return direct;
  if (!own.realFile) script_->realFile = realPath(*own.file).value_or(*own.file);
  return entries_.programs().ofScript(*own.realFile);
}

const RunningProgram::Script& RunningProgram::script() {
  if (script_) return *script_;
  script_.emplace();
  script_->name = scriptOf(*executable(), arguments());
  if (!script_->name) return *script_;
  const std::string& name = *script_->name;
  if (name.starts_with('/')) {
    // Whether the file exists does not matter: it may be gone, or be where only the process itself can see it.
    script_->file = std::filesystem::path(name).lexically_normal().string();
  } else if (!name.ends_with(".exe")) {
    script_->file = processes_.fileNamed(pid_, name);
  }
  return *script_;
}

// Whether the executable is several programs, which differ only in the name by which it is called.
bool RunningProgram::isAmbiguous() {
  const auto& all = entries();
  return std::any_of(all.begin(), all.end(), [&](const auto& entry) { return entry->program != all.front()->program; });
}

bool RunningProgram::isCalled(const DesktopEntry& candidate) {
  return !arguments().empty() && !candidate.program.empty() &&
         lastComponent(firstWord(arguments().front())) == lastComponent(candidate.program);
}

// Some of the system's tools are one program with many names, and an entry for one of the names (a player) has nothing
// to do with the others (a recorder).
bool RunningProgram::isReachedBy(const DesktopEntry& candidate) {
  if (candidate.realProgram.empty() || candidate.realProgram != executable()) return true;
  if (lastComponent(candidate.program) == lastComponent(candidate.realProgram)) return true;
  if (!isSharedDirectory(directoryOf(candidate.realProgram))) return true;
  // For a moment after its start, a program has no arguments yet. Then it is credited to no application rather than to
  // the wrong one.
  return isCalled(candidate);
}

// Whether the process was given the document or page that the entry opens: an entry for one radio station does not own
// every player.
bool RunningProgram::wasGiven(const DesktopEntry& candidate) {
  const std::size_t skip = candidate.script.empty() ? 1 : 2;
  for (std::size_t i = skip; i < candidate.command.size(); ++i) {
    const std::string& argument = candidate.command[i];
    if (argument.empty() || argument.front() == '-') continue;
    // What follows an option may be its value, which the program may have taken out of its command line.
    if (candidate.command[i - 1].starts_with('-')) continue;
    if (std::find(arguments().begin(), arguments().end(), argument) == arguments().end()) return false;
  }
  return true;
}

}  // namespace tollvane
