#include "platform/linux/apps/desktop_entries.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <utility>
#include <vector>

#include "platform/linux/apps/desktop_entry.h"
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

constexpr int deepest = 8;
constexpr std::size_t mostFolders = 512;
constexpr std::size_t mostFiles = 20000;
constexpr std::int64_t tick = 50'000'000;  // nanoseconds; the slowest kernel clocks tick every 10 ms

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

std::int64_t nanoseconds(const timespec& time) { return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec; }

bool isRecent(std::int64_t changed) {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
  const std::int64_t age = nanoseconds(now) - changed;
  return age >= 0 && age < tick;
}

std::vector<std::string> foldersOf(const DesktopEnvironment& environment, DesktopEntries::Kind kind) {
  const bool isAutostart = kind == DesktopEntries::Kind::autostart;
  std::vector<std::string> folders = isAutostart ? environment.configurationFolders : environment.dataFolders;
  const char* const below = isAutostart                                 ? "/autostart"
                            : kind == DesktopEntries::Kind::busServices ? "/dbus-1/services"
                                                                        : "/applications";
  for (std::string& folder : folders) folder += below;
  return folders;
}

}  // namespace

DesktopEntries::DesktopEntries(DesktopEnvironment environment, Kind kind)
    : environment_(std::move(environment)),
      kind_(kind),
      folders_(foldersOf(environment_, kind), kind == Kind::busServices ? busServiceFileEnding : desktopFileEnding) {}

void DesktopEntries::refresh() {
  if (!folders_.changed()) return;
  const std::vector<DesktopFile> found = folders_.list();
  const bool same = generation_ > 0 && found.size() == files_.size() &&
                    std::all_of(found.begin(), found.end(), [&](const DesktopFile& file) {
                      const auto known = files_.find(file.path);
                      return known != files_.end() && known->second.stamp == file.stamp && known->second.settled;
                    });
  if (same) return;

  std::unordered_map<std::string, File> files;
  byId_.clear();
  byLowerId_.clear();
  ProgramIndex::Entries entries;
  for (const DesktopFile& file : found) {
    const Entry& entry = read(file, files).entry;
    // The first folder's file counts for an id, even if it only says that there is no such application.
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
  File next{file.stamp, nullptr, !isRecent(file.stamp.changed)};
  std::optional<DesktopEntry> entry;
  if (old != files_.end() && old->second.stamp == file.stamp && old->second.settled) {
    if (old->second.entry != nullptr) entry = *old->second.entry;
  } else {
    entry = kind_ == Kind::busServices ? readBusService(file.path)
                                       : readDesktopEntry(file.path, environment_.currentDesktop);
  }
  if (entry) {
    entry->id = sanitized(file.id);
    // Also for an unchanged entry, because its program may have been installed meanwhile.
    findPrograms(*entry, environment_.searchPath);
    next.entry = std::make_shared<const DesktopEntry>(std::move(*entry));
  }
  return known.insert_or_assign(file.path, std::move(next)).first->second;
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

FileStamp FileStamp::of(const struct stat& status) {
  return {status.st_dev, status.st_ino, nanoseconds(status.st_mtim), nanoseconds(status.st_ctim), status.st_size};
}

FileStamp FileStamp::of(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? of(status) : FileStamp{};
}

DesktopFolders::DesktopFolders(std::vector<std::string> folders, std::string_view ending)
    : roots_(std::move(folders)), ending_(ending) {}

std::vector<DesktopFile> DesktopFolders::list() {
  folders_.clear();
  links_.clear();
  files_.clear();
  writes_.takeWrites();  // before anything is read, so that what is written meanwhile is noticed
  unsettled_ = false;
  listed_ = true;
  std::vector<DesktopFile> files;
  for (const std::string& root : roots_) listFolder(root, "", 0, files);
  return files;
}

void DesktopFolders::listFolder(const std::string& path, const std::string& prefix, int depth,
                                std::vector<DesktopFile>& files) {
  if (depth > deepest || folders_.size() >= mostFolders) return;
  // The stamp is taken before the folder is read, so that changed() notices a change during the reading.
  const FileStamp stamp = FileStamp::of(path);
  const bool seen = stamp != FileStamp{} && std::any_of(folders_.begin(), folders_.end(), [&](const Known& folder) {
                      return folder.stamp.device == stamp.device && folder.stamp.inode == stamp.inode;
                    });
  folders_.push_back({path, stamp});
  if (seen || stamp == FileStamp{}) return;  // links can lead in circles
  unsettled_ = unsettled_ || isRecent(stamp.changed);
  writes_.add(path);

  const std::unique_ptr<DIR, CloseDirectory> directory(::opendir(path.c_str()));
  if (!directory) return;
  std::vector<std::pair<std::string, bool>> names;  // and whether it may be a link
  while (const dirent* entry = ::readdir(directory.get())) {
    if (entry->d_name[0] != '.')
      names.emplace_back(entry->d_name, entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN);
  }
  std::sort(names.begin(), names.end());
  for (const auto& [name, isLink] : names) {
    struct stat status {};
    const bool exists = ::fstatat(::dirfd(directory.get()), name.c_str(), &status, 0) == 0;
    if (isLink && links_.size() < mostFiles)
      links_.push_back({path + "/" + name, exists ? FileStamp::of(status) : FileStamp{}});
    if (!exists) continue;
    if (S_ISDIR(status.st_mode)) {
      listFolder(path + "/" + name, prefix + name + "-", depth + 1, files);
    } else if (S_ISREG(status.st_mode) && name.size() > ending_.size() && name.ends_with(ending_) &&
               files.size() < mostFiles) {
      const std::string stem = name.substr(0, name.size() - ending_.size());
      files.push_back({prefix + stem, path + "/" + name, FileStamp::of(status)});
      files_.push_back({files.back().path, files.back().stamp});
      unsettled_ = unsettled_ || isRecent(files.back().stamp.changed);
    }
  }
}

bool DesktopFolders::changed() {
  if (!listed_ || unsettled_ || writes_.takeWrites()) return true;
  const auto isAnother = [](const Known& known) { return FileStamp::of(known.path) != known.stamp; };
  const auto anyIsAnother = [&](const std::vector<Known>& all) {
    return std::any_of(all.begin(), all.end(), isAnother);
  };
  return anyIsAnother(folders_) || anyIsAnother(links_) || (!writes_.isComplete() && anyIsAnother(files_));
}

}  // namespace tollvane
