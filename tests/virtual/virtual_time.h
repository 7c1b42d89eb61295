// A clock and a main queue whose time the test moves on.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace tollvane::test {

// What a program asked of the system, in the order in which it did.
class Journal {
 public:
  void note(std::string step) { steps.push_back(std::move(step)); }
  std::vector<std::string> steps;
};

// A second passes between any two readings, so that no cached answer is young enough to be used.
struct HurryingClock : Clock {
  TimePoint now() const override { return {}; }
  Instant steadyNow() const override { return time += std::chrono::seconds(1); }
  mutable Instant time{};
};

// Starts at 2025-01-31 14:05:09 UTC.
class VirtualClock : public Clock {
 public:
  TimePoint now() const override { return start_ + std::chrono::duration_cast<TimePoint::duration>(passed_ + set_); }
  Instant steadyNow() const override { return Instant(std::chrono::hours(1)) + passed_; }
  void advance(Duration by) { passed_ += by; }
  void setWallClock(Duration by) { set_ += by; }  // as the network sets a wrong clock

 private:
  TimePoint start_{std::chrono::seconds(1738332309)};
  Duration passed_{0};
  Duration set_{0};
};

class VirtualMainQueue : public MainQueue {
 public:
  explicit VirtualMainQueue(VirtualClock& clock) : clock_(clock) {}

  void post(Block block) override { after(Duration::zero(), std::move(block)); }
  void after(Duration delay, Block block) override {
    blocks_.emplace(clock_.steadyNow() + std::max(delay, Duration::zero()), std::move(block));
  }

  void advance(Duration by) {
    const Instant end = clock_.steadyNow() + by;
    while (!blocks_.empty() && blocks_.begin()->first <= end) {
      const Instant due = blocks_.begin()->first;
      Block block = std::move(blocks_.begin()->second);
      blocks_.erase(blocks_.begin());
      clock_.advance(std::max(due - clock_.steadyNow(), Instant::duration::zero()));
      block();
    }
    clock_.advance(end - clock_.steadyNow());
  }
  void runDue() { advance(Duration::zero()); }
  bool idle() const { return blocks_.empty(); }
  std::size_t waiting() const { return blocks_.size(); }

  std::unique_ptr<Watch> watchReadable(int descriptor, Block block) override;
  std::unique_ptr<Watch> watchWritable(int descriptor, Block block) override;
  std::unique_ptr<Watch> watchDirectory(const std::filesystem::path& directory, Block block) override;

  // Polls the real descriptors once and runs the blocks of those that are readable or writable now. Returns how many
  // blocks ran.
  int pollDescriptors();
  // Polls until no descriptor is readable. Returns at once if there is nothing to read.
  void drainDescriptors() {
    while (pollDescriptors() > 0) {
    }
  }
  void directoryChanged(const std::filesystem::path& directory);
  std::size_t descriptorsWatched() const { return descriptors_.size(); }

  Journal* journal = nullptr;
  bool cannotWatchDirectories = false;
  std::set<std::filesystem::path> missingDirectories;

 private:
  struct DescriptorWatch;
  struct DirectoryWatch;

  std::set<DescriptorWatch*> descriptors_;
  std::map<DirectoryWatch*, std::filesystem::path> directories_;
  VirtualClock& clock_;
  std::multimap<Instant, Block> blocks_;
};

}  // namespace tollvane::test
