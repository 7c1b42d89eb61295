#include "tests/virtual/virtual_platform.h"

#include <poll.h>

#include <array>
#include <ctime>
#include <stdexcept>

namespace tollvane::test {

struct VirtualMainQueue::DescriptorWatch : Watch {
  DescriptorWatch(VirtualMainQueue& where, pollfd what, Block whatToDo)
      : queue(where), question(what), block(std::move(whatToDo)) {
    queue.descriptors_.insert(this);
  }
  ~DescriptorWatch() override { queue.descriptors_.erase(this); }
  VirtualMainQueue& queue;
  pollfd question;
  Block block;
};

struct VirtualMainQueue::DirectoryWatch : Watch {
  DirectoryWatch(VirtualMainQueue& where, std::filesystem::path directory, Block what)
      : queue(where), block(std::move(what)) {
    queue.directories_[this] = std::move(directory);
  }
  ~DirectoryWatch() override { queue.directories_.erase(this); }
  VirtualMainQueue& queue;
  Block block;
};

std::unique_ptr<MainQueue::Watch> VirtualMainQueue::watchReadable(int descriptor, Block block) {
  return std::make_unique<DescriptorWatch>(*this, pollfd{descriptor, POLLIN, 0}, std::move(block));
}

std::unique_ptr<MainQueue::Watch> VirtualMainQueue::watchWritable(int descriptor, Block block) {
  return std::make_unique<DescriptorWatch>(*this, pollfd{descriptor, POLLOUT, 0}, std::move(block));
}

std::unique_ptr<MainQueue::Watch> VirtualMainQueue::watchDirectory(const std::filesystem::path& directory,
                                                                   Block block) {
  if (journal) journal->note("watch of " + directory.filename().string());
  if (cannotWatchDirectories || missingDirectories.contains(directory)) return nullptr;
  return std::make_unique<DirectoryWatch>(*this, directory, std::move(block));
}

int VirtualMainQueue::pollDescriptors() {
  std::vector<pollfd> queries;
  std::vector<DescriptorWatch*> watches;
  for (DescriptorWatch* watch : descriptors_) {
    queries.push_back(watch->question);
    watches.push_back(watch);
  }
  if (queries.empty() || ::poll(queries.data(), queries.size(), 0) <= 0) return 0;
  int ready = 0;
  for (std::size_t i = 0; i < queries.size(); ++i) {
    if (queries[i].revents == 0 || !descriptors_.contains(watches[i])) continue;  // another block ended this watch
    const Block kept = watches[i]->block;
    kept();
    ++ready;
  }
  return ready;
}

void VirtualMainQueue::directoryChanged(const std::filesystem::path& directory) {
  const auto watched = directories_;
  for (const auto& [watch, path] : watched) {
    if (path != directory || !directories_.contains(watch)) continue;
    const Block kept = watch->block;
    kept();
  }
}

std::string VirtualDates::string(std::string_view pattern, TimePoint time) const {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 64> text{};
  std::size_t length = 0;
  if (pattern == "h:mm:ss a") length = std::strftime(text.data(), text.size(), "%-I:%M:%S %p", &parts);
  if (pattern == "yyyy-MM-dd HH:mm:ss") length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
  if (length == 0) throw std::invalid_argument("a pattern that nobody uses");
  return {text.data(), length};
}

}  // namespace tollvane::test
