#include "platform/linux/apps/desktop_entries.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "support/ascii.h"

namespace tollvane {

namespace {

template <typename Table>
DesktopEntries::Entry entryAt(const Table& table, const std::string& key) {
  const auto found = table.find(key);
  return found == table.end() ? nullptr : found->second;
}

template <typename Test>
DesktopEntries::Entry findIf(const ProgramIndex::Entries& entries, Test test) {
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return test(*entry); });
  return found == entries.end() ? nullptr : *found;
}

}  // namespace

DesktopEntries::DesktopEntries(DesktopEnvironment environment)
    : environment_(std::move(environment)), folders_(environment_.dataFolders) {}

void DesktopEntries::refresh() {
  if (!distrusted_ && !folders_.changed()) return;
  distrusted_ = false;
  const std::vector<DesktopFile> found = folders_.list();
  const bool same = generation_ > 0 && found.size() == files_.size() &&
                    std::all_of(found.begin(), found.end(), [&](const DesktopFile& file) {
                      const auto known = files_.find(file.path);
                      return known != files_.end() && known->second.stamp == file.stamp;
                    });
  if (same) return;

  std::unordered_map<std::string, File> files;
  byId_.clear();
  byLowerId_.clear();
  ProgramIndex::Entries entries;
  for (const DesktopFile& file : found) {
    const Entry& entry = read(file, files).entry;
    // An earlier folder's file stands for the id, even if it only says that there is no such application.
    if (entry == nullptr || !byId_.emplace(file.id, entry).second) continue;
    byLowerId_.emplace(ascii::lowerCase(file.id), entry);
    entries.push_back(entry);
  }
  files_ = std::move(files);
  programs_ = ProgramIndex(std::move(entries));
  ++generation_;
}

DesktopEntries::File& DesktopEntries::read(const DesktopFile& file, std::unordered_map<std::string, File>& known) {
  const auto old = files_.find(file.path);
  File next{file.stamp, nullptr};
  std::optional<DesktopEntry> entry;
  if (old != files_.end() && old->second.stamp == file.stamp) {
    if (old->second.entry != nullptr) entry = *old->second.entry;
  } else {
    entry = readDesktopEntry(file.path, environment_.currentDesktop);
  }
  if (entry) {
    entry->id = sanitized(file.id);
    // Also for an entry that is as it was: a program often arrives together with somebody else's entry.
    findPrograms(*entry, environment_.searchPath);
    next.entry = std::make_shared<const DesktopEntry>(std::move(*entry));
  }
  return known.insert_or_assign(file.path, std::move(next)).first->second;
}

bool DesktopEntries::isFresh(const DesktopEntry& entry) const {
  const auto known = files_.find(entry.path);
  return known == files_.end() || known->second.stamp == FileStamp::of(entry.path);
}

DesktopEntries::Entry DesktopEntries::withId(std::string_view id) const {
  if (Entry entry = entryAt(byId_, std::string(id))) return entry;
  std::string_view stem = id;
  if (stem.ends_with(desktopFileEnding)) stem.remove_suffix(desktopFileEnding.size());
  if (Entry entry = entryAt(byId_, std::string(stem))) return entry;
  return entryAt(byLowerId_, ascii::lowerCase(stem));
}

DesktopEntries::Entry DesktopEntries::withPath(std::string_view path) const {
  const auto known = files_.find(std::string(path));
  return known == files_.end() ? nullptr : known->second.entry;
}

DesktopEntries::Entry DesktopEntries::withFlatpakId(std::string_view flatpakId) const {
  return findIf(programs_.all(), [&](const DesktopEntry& entry) { return entry.flatpakId == flatpakId; });
}

DesktopEntries::Entry DesktopEntries::withSnapInstance(std::string_view instance) const {
  return findIf(programs_.all(), [&](const DesktopEntry& entry) { return entry.snapInstance == instance; });
}

DesktopEntries::Entry DesktopEntries::named(std::string_view name) const {
  return findIf(programs_.all(), [&](const DesktopEntry& entry) { return entry.isRegular() && entry.name == name; });
}

}  // namespace tollvane
