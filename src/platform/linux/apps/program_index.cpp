#include "platform/linux/apps/program_index.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "platform/linux/kernel/program_line.h"
#include "support/ascii.h"

namespace tollvane {

namespace {

// Script names that are too common to tell the application.
constexpr std::string_view commonScriptNames[] = {"main", "__main__", "app",    "index",  "run",    "start", "launcher",
                                                  "gui",  "cli",      "launch", "server", "client", "test"};

auto rank(const DesktopEntry& entry) {
  return std::tuple(!entry.isRegular(), entry.hidden, entry.extraArguments(), entry.id.size(),
                    std::string_view(entry.id));
}

template <typename Table>
const ProgramIndex::Entries* find(const Table& table, std::string_view key) {
  const auto found = table.find(std::string(key));
  return found == table.end() ? nullptr : &found->second;
}

template <typename Table>
void add(Table& table, std::string_view key, const ProgramIndex::Entry& entry) {
  if (key.empty()) return;
  auto& entries = table[std::string(key)];
  if (entries.empty() || entries.back() != entry) entries.push_back(entry);
}

bool isCommonScriptName(std::string_view name) {
  return std::find(std::begin(commonScriptNames), std::end(commonScriptNames), name) != std::end(commonScriptNames);
}

}  // namespace

ProgramIndex::ProgramIndex(Entries entries) : entries_(std::move(entries)) {
  std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) { return rank(*a) < rank(*b); });
  for (const Entry& entry : entries_) {
    if (entry->isInterpretersOwn()) continue;
    add(byProgram_, entry->program, entry);
    add(byProgram_, entry->realProgram, entry);
    add(byTryExec_, entry->realTryExec, entry);
    for (const std::string& file : {entry->realProgram, entry->script}) {
      const std::string_view folder = directoryOf(file);
      if (!isSharedDirectory(folder)) add(byFolder_, folder, entry);
    }
    if (!entry->command.empty()) {
      const std::string& program = entry->command.front();
      if (!isInterpreter(program) && !isLauncher(program)) add(byName_, lastComponent(program), entry);
    }
    add(byScript_, entry->script, entry);
    add(byClass_, ascii::lowerCase(entry->startupWmClass), entry);
  }
  // The classes that entries name are added first: they count more than another entry's id.
  for (const Entry& entry : entries_) {
    if (!entry->isInterpretersOwn()) add(byClass_, ascii::lowerCase(entry->id), entry);
  }
}

// The entries of this folder's program. Null, too, if several programs share the folder and none of them has this name:
// then the folder tells nothing.
const ProgramIndex::Entries* ProgramIndex::inFolder(std::string_view folder, std::string_view name) const {
  if (isSharedDirectory(folder)) return nullptr;
  const Entries* entries = find(byFolder_, folder);
  if (entries == nullptr) return nullptr;
  const bool oneProgram = std::all_of(entries->begin(), entries->end(), [&](const Entry& entry) {
    return entry->realProgram == entries->front()->realProgram && entry->script == entries->front()->script;
  });
  if (oneProgram) return entries;
  const Entries* named = find(byName_, name);
  const bool allHere = named != nullptr && std::all_of(named->begin(), named->end(), [&](const Entry& entry) {
                         return directoryOf(entry->realProgram) == folder;
                       });
  return allHere ? named : nullptr;
}

const ProgramIndex::Entries& ProgramIndex::ofExecutable(const std::string& executable) const {
  const std::string_view name = lastComponent(executable);
  if (const Entries* entries = find(byProgram_, executable)) return *entries;
  if (const Entries* entries = find(byTryExec_, executable)) return *entries;
  if (const Entries* entries = inFolder(directoryOf(executable), name)) return *entries;
  if (const Entries* entries = find(byName_, name)) return *entries;
  if (const Entries* entries = find(byClass_, ascii::lowerCase(name))) return *entries;
  return none;
}

const ProgramIndex::Entries& ProgramIndex::ofScript(const std::string& script) const {
  if (const Entries* entries = find(byProgram_, script)) return *entries;
  if (const Entries* entries = find(byScript_, script)) return *entries;
  const std::string_view name = lastComponent(script);
  const std::string_view bare = withoutScriptEnding(name);
  if (const Entries* entries = inFolder(directoryOf(script), bare)) return *entries;
  if (const Entries* entries = find(byScript_, name)) return *entries;
  if (isCommonScriptName(bare)) return none;
  if (const Entries* entries = find(byName_, name)) return *entries;
  if (const Entries* entries = find(byName_, bare)) return *entries;
  return none;
}

const ProgramIndex::Entries& ProgramIndex::ofWindowClass(std::string_view windowClass) const {
  const Entries* entries = find(byClass_, ascii::lowerCase(windowClass));
  return entries == nullptr ? none : *entries;
}

}  // namespace tollvane
