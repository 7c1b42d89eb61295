// The virtual roles for processes and applications: the test says which ones run and which are installed.
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
#include "tests/virtual/virtual_time.h"

namespace tollvane::test {

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
    if (journal) journal->note("log tool");
    if (cannotStart) return nullptr;
    programs.push_back(std::make_shared<Program>(Program{std::move(launch)}));
    return std::make_unique<Handle>(programs.back());
  }
  Program& last() { return *programs.back(); }

  std::vector<std::shared_ptr<Program>> programs;
  int attempts = 0;
  Journal* journal = nullptr;
  bool cannotStart = false;

 private:
  struct Handle : ChildProcess {
    explicit Handle(std::shared_ptr<Program> started) : program(std::move(started)) {}
    void removeTerminationHandler() override { program->handlerRemoved = true; }
    ~Handle() override {
      program->handlerRemoved = true;
      program->running = false;
    }
    void terminate() override {
      program->terminationAsked = true;
      if (program->running) program->end();
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
  std::vector<RunningApplication> regularApplications() const override {
    std::vector<RunningApplication> result;
    for (const auto& entry : running)
      if (entry.application.activationPolicy == ActivationPolicy::regular) result.push_back(entry.application);
    return result;
  }
  std::vector<std::string> names(std::string_view bundleID) const override {
    std::vector<std::string> result;
    for (const auto& application : runningApplications(bundleID))
      if (application.localizedName) result.push_back(*application.localizedName);
    if (const auto where = urlForApplication(bundleID)) result.push_back(displayName(*where));
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
  std::string icon(std::string_view bundleID) const override {
    const auto found = icons.find(std::string(bundleID));
    return found == icons.end() ? std::string() : found->second;
  }
  std::string displayName(const std::filesystem::path& path) const override {
    const auto found = displayNames.find(path);
    return found == displayNames.end() ? path.filename().string() : found->second;
  }

  void activate(const RunningApplication& application, std::string_view title,
                std::function<void(bool)> done) override {
    activated.push_back(application.pid);
    titles.emplace_back(title);
    if (ending.contains(application.pid))
      std::erase_if(running, [&](const Running& each) { return each.application.pid == application.pid; });
    done(!windowless.contains(application.pid) && !ending.contains(application.pid));
  }
  void open(const std::filesystem::path& path, std::function<void(bool)> done) override {
    opened.push_back(path);
    done(!broken.contains(path));
  }
  void openURL(std::string_view url) override { opened.emplace_back(url); }
  void openURL(std::string_view url, const std::filesystem::path& application,
               std::function<void(bool)> done) override {
    opened.push_back(std::string(url) + " in " + application.string());
    done(!broken.contains(application));
  }

  void addRunning(Pid pid, std::optional<std::string> name, ActivationPolicy policy = ActivationPolicy::regular,
                  std::string bundleID = "") {
    running.push_back({{pid, std::move(name), policy}, std::move(bundleID)});
  }

  std::vector<Running> running;
  std::map<std::string, std::filesystem::path> installed;  // by bundle identifier
  std::map<std::filesystem::path, std::string> displayNames;
  std::map<std::string, std::string> icons;
  std::set<Pid> windowless;                // activating these brings nothing forward
  std::set<Pid> ending;                    // these end before they come forward
  std::set<std::filesystem::path> broken;  // these do not start
  std::vector<Pid> activated;
  std::vector<std::string> titles;  // of the windows that were wanted, for each of `activated`
  std::vector<std::string> opened;  // paths, pages, and pages "in" an application
};

}  // namespace tollvane::test
