// A whole system in memory, moved by hand: the third implementation of the platform beside the real ones.
//
//   VirtualPlatform system;
//   AppDelegate delegate(system.platform());
//   system.workspace.addRunning(4242, "Mail");
//   system.children.last().print(...);
//   system.queue.advance(4s);              // runs what falls due, in order, at its exact time
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace tollvane::test {

using namespace std::chrono_literals;

// Starts at 2025-01-31 14:05:09 UTC.
class VirtualClock : public Clock {
 public:
  TimePoint now() const override { return start_ + std::chrono::duration_cast<TimePoint::duration>(passed_ + set_); }
  Instant steadyNow() const override { return Instant(std::chrono::hours(1)) + passed_; }
  void advance(Duration by) { passed_ += by; }
  void setWallClock(Duration by) { set_ += by; }  // what the network does to a clock that was wrong

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

 private:
  VirtualClock& clock_;
  std::multimap<Instant, Block> blocks_;
};

class VirtualDefaults : public Defaults {
 public:
  std::optional<Value> object(std::string_view key) const override {
    const auto found = values.find(std::string(key));
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  void set(std::string_view key, bool value) override { values[std::string(key)] = value; }
  void set(std::string_view key, double value) override { values[std::string(key)] = value; }

  std::map<std::string, Value> values;
};

class VirtualLocations : public Locations {
 public:
  std::optional<std::filesystem::path> applicationSupport() const override {
    ++asked;
    return support;
  }
  std::vector<std::filesystem::path> applicationFolders() const override {
    return {"/Applications", "/System/Applications", "/System/Applications/Utilities", "/home/user/Applications"};
  }

  std::optional<std::filesystem::path> support = "/home/user/Application Support";
  mutable int asked = 0;
};

// A disk in memory. Directories must exist before files can be written into them.
class VirtualFiles : public Files {
 public:
  bool exists(const std::filesystem::path& path) const override {
    return contents.contains(path) || directories.contains(path);
  }
  bool createDirectories(const std::filesystem::path& directory) override {
    if (readOnly || contents.contains(directory)) return false;
    for (std::filesystem::path p = directory; !p.empty() && p != p.root_path(); p = p.parent_path())
      directories[p] = true;
    return true;
  }
  Append append(const std::filesystem::path& file, std::string_view bytes) override {
    const auto found = contents.find(file);
    if (readOnly || found == contents.end()) return Append::notOpened;
    if (full) return Append::notWritten;
    found->second += bytes;
    return Append::done;
  }
  bool writeAtomically(const std::filesystem::path& file, std::string_view bytes) override {
    if (readOnly || full || !directories.contains(file.parent_path())) return false;
    contents[file] = bytes;
    ++atomicWrites;
    return true;
  }

  std::map<std::filesystem::path, std::string> contents;
  std::map<std::filesystem::path, bool> directories;
  bool readOnly = false;
  bool full = false;
  int atomicWrites = 0;
};

class VirtualBundle : public Bundle {
 public:
  std::optional<std::string> infoString(std::string_view key) const override {
    const auto found = info.find(std::string(key));
    return found == info.end() ? std::nullopt : std::optional(found->second);
  }
  std::filesystem::path logTool() const override { return "/usr/bin/log"; }

  std::map<std::string, std::string> info;
};

// Programs that print and end when the test says so.
class VirtualChildren : public ChildProcesses {
 public:
  struct Program {
    Launch launch;
    bool running = true;
    bool terminationAsked = false;
    bool handlerRemoved = false;

    void print(std::string_view bytes) const { launch.onOutput(bytes); }
    void end() {
      running = false;
      if (!handlerRemoved) launch.onTermination();
    }
  };

  std::unique_ptr<ChildProcess> launch(Launch launch) override {
    ++attempts;
    if (cannotStart) return nullptr;
    programs.push_back(std::make_shared<Program>(Program{std::move(launch)}));
    return std::make_unique<Handle>(programs.back());
  }
  Program& last() { return *programs.back(); }

  std::vector<std::shared_ptr<Program>> programs;
  int attempts = 0;
  bool cannotStart = false;

 private:
  struct Handle : ChildProcess {
    explicit Handle(std::shared_ptr<Program> started) : program(std::move(started)) {}
    void removeTerminationHandler() override { program->handlerRemoved = true; }
    void terminate() override {
      program->terminationAsked = true;
      program->end();
    }
    std::shared_ptr<Program> program;
  };
};

class VirtualProcessTable : public ProcessTable {
 public:
  std::optional<Pid> responsiblePid(Pid pid) const override { return lookUp(responsible, pid); }
  std::optional<Pid> parentPid(Pid pid) const override {
    ++parentsAsked;
    return lookUp(parents, pid);
  }

  std::map<Pid, Pid> responsible;
  std::map<Pid, Pid> parents;
  mutable int parentsAsked = 0;

 private:
  static std::optional<Pid> lookUp(const std::map<Pid, Pid>& map, Pid pid) {
    const auto found = map.find(pid);
    return found == map.end() ? std::nullopt : std::optional(found->second);
  }
};

class VirtualWorkspace : public Workspace {
 public:
  struct Running {
    RunningApplication application;
    std::string bundleID;
  };

  std::optional<RunningApplication> runningApplication(Pid pid) const override {
    for (const auto& entry : running)
      if (entry.application.pid == pid) return entry.application;
    return std::nullopt;
  }
  std::vector<RunningApplication> runningApplications(std::string_view bundleID) const override {
    std::vector<RunningApplication> result;
    for (const auto& entry : running)
      if (entry.bundleID == bundleID) result.push_back(entry.application);
    return result;
  }
  std::optional<std::filesystem::path> urlForApplication(std::string_view bundleID) const override {
    const auto found = installed.find(std::string(bundleID));
    return found == installed.end() ? std::nullopt : std::optional(found->second);
  }
  std::optional<std::filesystem::path> urlForApplicationNamed(std::string_view displayName) const override {
    for (const auto& [path, name] : displayNames)
      if (name == displayName) return path;
    return std::nullopt;
  }
  std::string displayName(const std::filesystem::path& path) const override {
    const auto found = displayNames.find(path);
    return found == displayNames.end() ? path.filename().string() : found->second;
  }

  void addRunning(Pid pid, std::optional<std::string> name, ActivationPolicy policy = ActivationPolicy::regular,
                  std::string bundleID = "") {
    running.push_back({{pid, std::move(name), policy}, std::move(bundleID)});
  }

  std::vector<Running> running;
  std::map<std::string, std::filesystem::path> installed;  // by bundle identifier
  std::map<std::filesystem::path, std::string> displayNames;
};

class VirtualStatusBar : public StatusBar {
 public:
  struct Shown {
    std::string symbolName;
    std::string accessibilityDescription;
    std::string toolTip;
  };

  std::unique_ptr<StatusItem> makeStatusItem() override {
    if (broken) return nullptr;
    ++itemsMade;
    return std::make_unique<Item>(shown);
  }

  Shown shown;
  int itemsMade = 0;
  bool broken = false;

 private:
  struct Item : StatusItem {
    explicit Item(Shown& where) : shown(where) {}
    void setImage(std::string_view symbolName, std::string_view accessibilityDescription) override {
      shown.symbolName = symbolName;
      shown.accessibilityDescription = accessibilityDescription;
    }
    void setToolTip(std::string_view text) override { shown.toolTip = text; }
    Shown& shown;
  };
};

// English, UTC, and the two patterns that Tollvane uses.
class VirtualDates : public DateFormatter {
 public:
  std::string string(std::string_view pattern, TimePoint time) const override;
};

struct VirtualPlatform {
  VirtualClock clock;
  VirtualMainQueue queue{clock};
  VirtualDates dates;
  VirtualDefaults defaults;
  VirtualLocations locations;
  VirtualFiles files;
  VirtualBundle bundle;
  VirtualChildren children;
  VirtualProcessTable processes;
  VirtualWorkspace workspace;
  VirtualStatusBar statusBar;

  Platform platform() {
    return {queue, clock, dates, defaults, locations, files, bundle, children, processes, workspace, statusBar};
  }
};

}  // namespace tollvane::test
