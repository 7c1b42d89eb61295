#include "platform/linux/apps/desktop_folders.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <utility>

namespace tollvane {

namespace {

constexpr std::string_view kEnding = ".desktop";
constexpr int kDeepest = 8;
constexpr std::size_t kMostFolders = 512;
constexpr std::size_t kMostFiles = 20000;
constexpr std::int64_t kTick = 50'000'000;  // nanoseconds; the slowest kernel clocks tick every 10 ms

constexpr std::string_view kDefaultSearchPath = "/usr/local/bin:/usr/bin:/bin:/usr/local/games:/usr/games:/snap/bin";
constexpr std::string_view kDefaultDataFolders = "/usr/local/share/:/usr/share/";
constexpr std::string_view kMoreDataFolders[] = {"/var/lib/flatpak/exports/share", "/var/lib/snapd/desktop"};

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

std::int64_t nanoseconds(const timespec& time) { return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec; }

bool isRecent(std::int64_t changed) {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
  const std::int64_t age = nanoseconds(now) - changed;
  return age >= 0 && age < kTick;
}

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

// Relative paths are invalid in these variables, and to be ignored.
void add(std::vector<std::string>& folders, std::string_view folder) {
  while (folder.size() > 1 && folder.ends_with('/')) folder.remove_suffix(1);
  if (!folder.starts_with('/')) return;
  if (std::find(folders.begin(), folders.end(), folder) == folders.end()) folders.emplace_back(folder);
}

}  // namespace

DesktopEnvironment DesktopEnvironment::current() {
  DesktopEnvironment environment;
  const std::string home = variable("HOME");
  std::string dataHome = variable("XDG_DATA_HOME");
  if (!dataHome.starts_with('/') && !home.empty()) dataHome = home + "/.local/share";
  while (dataHome.size() > 1 && dataHome.ends_with('/')) dataHome.pop_back();
  add(environment.dataFolders, dataHome);
  const std::string given = variable("XDG_DATA_DIRS");
  std::string_view folders = given.empty() ? kDefaultDataFolders : std::string_view(given);
  while (!folders.empty()) {
    const std::string_view folder = folders.substr(0, folders.find(':'));
    folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
    add(environment.dataFolders, folder);
  }
  if (!dataHome.empty()) add(environment.dataFolders, dataHome + "/flatpak/exports/share");
  if (!home.empty()) add(environment.dataFolders, home + "/.local/share/flatpak/exports/share");
  for (const std::string_view folder : kMoreDataFolders) add(environment.dataFolders, folder);
  environment.searchPath = variable("PATH");
  if (environment.searchPath.empty()) environment.searchPath = kDefaultSearchPath;
  environment.currentDesktop = variable("XDG_CURRENT_DESKTOP");
  return environment;
}

FileStamp FileStamp::of(const struct stat& status) {
  return {status.st_dev, status.st_ino, nanoseconds(status.st_mtim), nanoseconds(status.st_ctim), status.st_size};
}

FileStamp FileStamp::of(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? of(status) : FileStamp{};
}

DesktopFolders::DesktopFolders(std::vector<std::string> dataFolders) : roots_(std::move(dataFolders)) {
  for (std::string& root : roots_) root += "/applications";
}

std::vector<DesktopFile> DesktopFolders::list() {
  folders_.clear();
  unsettled_ = false;
  listed_ = true;
  std::vector<DesktopFile> files;
  for (const std::string& root : roots_) listFolder(root, "", 0, files);
  return files;
}

void DesktopFolders::listFolder(const std::string& path, const std::string& prefix, int depth,
                                std::vector<DesktopFile>& files) {
  if (depth > kDeepest || folders_.size() >= kMostFolders) return;
  // Stamped before it is read: a change during the reading is noticed at the next look.
  const FileStamp stamp = FileStamp::of(path);
  const bool seen = stamp != FileStamp{} && std::any_of(folders_.begin(), folders_.end(), [&](const Folder& folder) {
                      return folder.stamp.device == stamp.device && folder.stamp.inode == stamp.inode;
                    });
  folders_.push_back({path, stamp});
  if (seen || stamp == FileStamp{}) return;  // links can lead in circles
  unsettled_ = unsettled_ || isRecent(stamp.changed);

  const std::unique_ptr<DIR, CloseDirectory> directory(::opendir(path.c_str()));
  if (!directory) return;
  std::vector<std::string> names;
  while (const dirent* entry = ::readdir(directory.get())) {
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
  }
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    struct stat status {};
    if (::fstatat(::dirfd(directory.get()), name.c_str(), &status, 0) != 0) continue;
    if (S_ISDIR(status.st_mode)) {
      listFolder(path + "/" + name, prefix + name + "-", depth + 1, files);
    } else if (S_ISREG(status.st_mode) && name.size() > kEnding.size() && name.ends_with(kEnding) &&
               files.size() < kMostFiles) {
      const std::string stem = name.substr(0, name.size() - kEnding.size());
      files.push_back({prefix + stem, path + "/" + name, FileStamp::of(status)});
    }
  }
}

bool DesktopFolders::changed() const {
  if (!listed_ || unsettled_) return true;
  return std::any_of(folders_.begin(), folders_.end(),
                     [](const Folder& folder) { return FileStamp::of(folder.path) != folder.stamp; });
}

}  // namespace tollvane
