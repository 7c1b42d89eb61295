#include "platform/linux/apps/desktop_folders.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <utility>

#include "platform/linux/apps/desktop_entry.h"

namespace tollvane {

namespace {

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

}  // namespace

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
  if (depth > deepest || folders_.size() >= mostFolders) return;
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
    } else if (S_ISREG(status.st_mode) && name.size() > desktopFileEnding.size() && name.ends_with(desktopFileEnding) &&
               files.size() < mostFiles) {
      const std::string stem = name.substr(0, name.size() - desktopFileEnding.size());
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
