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
#include <set>
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

  std::unique_ptr<Watch> watchReadable(int descriptor, Block block) override;
  std::unique_ptr<Watch> watchDirectory(const std::filesystem::path& directory, Block block) override;

  // Real descriptors, looked at once: runs the blocks of those that are readable now. Their count.
  int pollDescriptors();
  // Until none of them is. Returns at once when there is nothing to be read.
  void drainDescriptors() {
    while (pollDescriptors() > 0) {
    }
  }
  void directoryChanged(const std::filesystem::path& directory);
  std::size_t descriptorsWatched() const { return descriptors_.size(); }

  bool cannotWatchDirectories = false;

 private:
  struct DescriptorWatch;
  struct DirectoryWatch;

  std::map<DescriptorWatch*, int> descriptors_;
  std::map<DirectoryWatch*, std::filesystem::path> directories_;
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
  std::optional<std::filesystem::path> home() const override { return "/home/user"; }
  std::optional<std::filesystem::path> applicationSupport() const override {
    ++asked;
    return support;
  }
  std::vector<NativeHostDirectory> nativeHostDirectories(std::string_view bundleID) const override {
    const auto found = nativeHosts.find(std::string(bundleID));
    if (found == nativeHosts.end() || !support) return {};
    return {{*support / found->second}};
  }
  std::vector<std::filesystem::path> applicationFolders() const override {
    return {"/Applications", "/System/Applications", "/System/Applications/Utilities", "/home/user/Applications"};
  }

  std::optional<std::filesystem::path> support = "/home/user/Application Support";
  std::map<std::string, std::string> nativeHosts = {
      {"com.google.Chrome", "Google/Chrome/NativeMessagingHosts"},
      {"com.microsoft.edgemac", "Microsoft Edge/NativeMessagingHosts"},
      {"com.brave.Browser", "BraveSoftware/Brave-Browser/NativeMessagingHosts"},
      {"company.thebrowser.Browser", "Arc/User Data/NativeMessagingHosts"},
      {"org.chromium.Chromium", "Chromium/NativeMessagingHosts"},
      {"org.mozilla.firefox", "Mozilla/NativeMessagingHosts"},
  };
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

  bool write(const std::filesystem::path& file, std::string_view bytes) override {
    if (readOnly || full || !directories.contains(file.parent_path())) return false;
    contents[file] = bytes;
    return true;
  }
  std::optional<std::string> read(const std::filesystem::path& file, std::size_t most) const override {
    const auto found = contents.find(file);
    if (found == contents.end() || found->second.size() > most || unreadable.contains(file)) return std::nullopt;
    return found->second;
  }
  std::optional<std::vector<std::string>> list(const std::filesystem::path& directory) const override {
    if (!directories.contains(directory)) return std::nullopt;
    std::vector<std::string> names;
    for (const auto& [path, bytes] : contents)
      if (path.parent_path() == directory) names.insert(names.begin(), path.filename());
    return names;
  }
  bool contentsEqual(const std::filesystem::path& a, const std::filesystem::path& b) const override {
    return contents.contains(a) && contents.contains(b) && contents.at(a) == contents.at(b);
  }
  bool copy(const std::filesystem::path& from, const std::filesystem::path& to) override {
    if (contents.contains(to) || !contents.contains(from) || !write(to, contents.at(from))) return false;
    ++copies;
    return true;
  }
  bool rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
    if (readOnly || cannotRename || !contents.contains(from)) return false;
    contents[to] = std::move(contents[from]);
    contents.erase(from);
    return true;
  }
  bool remove(const std::filesystem::path& file) override { return !readOnly && contents.erase(file) > 0; }

  std::map<std::filesystem::path, std::string> contents;
  std::map<std::filesystem::path, bool> directories;
  std::set<std::filesystem::path> unreadable;
  bool cannotRename = false;
  int copies = 0;
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
  std::vector<std::string> infoStrings(std::string_view key) const override {
    const auto found = lists.find(std::string(key));
    return found == lists.end() ? std::vector<std::string>{} : found->second;
  }
  std::optional<std::filesystem::path> auxiliaryExecutable(std::string_view name) const override {
    return inside(programs, name);
  }
  std::optional<std::filesystem::path> resource(std::string_view name) const override {
    return inside(resources, name);
  }
  std::filesystem::path logTool() const override { return "/usr/bin/log"; }

  std::map<std::string, std::string> info;
  std::map<std::string, std::vector<std::string>> lists;
  std::set<std::string> programs;
  std::set<std::string> resources;

 private:
  static std::optional<std::filesystem::path> inside(const std::set<std::string>& names, std::string_view name) {
    if (!names.contains(std::string(name))) return std::nullopt;
    return std::filesystem::path("/bundle") / name;
  }
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
  std::vector<RunningApplication> runningApplications() const override {
    std::vector<RunningApplication> result;
    for (const auto& entry : running) result.push_back(entry.application);
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

  void activate(const RunningApplication& application, std::function<void(bool)> done) override {
    activated.push_back(application.pid);
    done(!windowless.contains(application.pid));
  }
  void open(const std::filesystem::path& path) override { opened.push_back(path); }
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
  std::set<Pid> windowless;                // activating these brings nothing forward
  std::set<std::filesystem::path> broken;  // these do not start
  std::vector<Pid> activated;
  std::vector<std::string> opened;  // paths, pages, and pages "in" an application
};

class VirtualStatusBar : public StatusBar {
 public:
  struct Shown {
    std::string symbolName;
    std::string accessibilityDescription;
    std::string toolTip;
    MenuDelegate* menuDelegate = nullptr;
  };

  std::unique_ptr<StatusItem> makeStatusItem() override {
    if (broken) return nullptr;
    ++itemsMade;
    return std::make_unique<Item>(shown);
  }

  // The menu, as the user sees who opens it now.
  Menu openMenu() const {
    Menu menu;
    shown.menuDelegate->menuNeedsUpdate(menu);
    return menu;
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
    void setMenu(MenuDelegate& delegate) override { shown.menuDelegate = &delegate; }
    Shown& shown;
  };
};

// English, UTC, and the two patterns that Tollvane uses.
class VirtualDates : public DateFormatter {
 public:
  std::string string(std::string_view pattern, TimePoint time) const override;
};

// Remembers what it was told, in the order in which it was told.
class VirtualApplication : public Application, public Alerts {
 public:
  void activateIgnoringOtherApps() override { frontmost = true; }
  void terminate() override { terminated = true; }
  void runModal(const Alert& alert, std::function<void(std::size_t)> answer) override {
    alertsBehindOthers += frontmost ? 0 : 1;
    frontmost = false;
    alerts.push_back(alert);
    answers.push_back(std::move(answer));
  }

  bool frontmost = false;
  bool terminated = false;
  int alertsBehindOthers = 0;  // shown without bringing the application forward first
  std::vector<Alert> alerts;
  std::vector<std::function<void(std::size_t)>> answers;
};

// A web site that answers when the test says so.
class VirtualHttp : public Http {
 public:
  void get(const HttpRequest& request, std::function<void(std::optional<HttpResponse>)> completion) override {
    requests.push_back(request);
    completions.push_back(std::move(completion));
  }
  void answer(std::optional<HttpResponse> response) { completions.back()(std::move(response)); }

  std::vector<HttpRequest> requests;
  std::vector<std::function<void(std::optional<HttpResponse>)>> completions;
};

class VirtualSafari : public SafariServices {
 public:
  void dispatchMessage(std::string_view name, std::string_view extensionID, std::string_view userInfo) override {
    sent.push_back(std::string(name) + " " + std::string(extensionID) + " " + std::string(userInfo));
  }
  void getState(std::string_view, std::function<void(std::optional<bool>)> completion) override {
    ++statesAsked;
    completion(state);
  }
  void showPreferences(std::string_view extensionID) override { preferencesShown.emplace_back(extensionID); }

  std::optional<bool> state;
  int statesAsked = 0;
  std::vector<std::string> sent;
  std::vector<std::string> preferencesShown;
};

class VirtualLogin : public LoginService {
 public:
  LoginStatus status() const override { return state; }
  std::optional<std::string> registerApplication() override { return change(LoginStatus::enabled); }
  std::optional<std::string> unregisterApplication() override { return change(LoginStatus::notRegistered); }

  LoginStatus state = LoginStatus::notRegistered;
  std::optional<std::string> refusal;
  int changes = 0;

 private:
  std::optional<std::string> change(LoginStatus wanted) {
    ++changes;
    if (!refusal) state = wanted;
    return refusal;
  }
};

class VirtualSettingsWindows : public SettingsWindows {
 public:
  struct Shown {
    SettingsWindow::Style style;
    ui::SettingsContent content;
    int drawn = 0;
    int broughtForward = 0;
  };

  std::unique_ptr<SettingsWindow> make(const SettingsWindow::Style& style) override {
    windows.push_back(std::make_shared<Shown>(Shown{style, {}}));
    return std::make_unique<Window>(windows.back());
  }

  std::vector<std::shared_ptr<Shown>> windows;

 private:
  struct Window : SettingsWindow {
    explicit Window(std::shared_ptr<Shown> where) : shown(std::move(where)) {}
    void setContent(const ui::SettingsContent& content) override {
      shown->content = content;
      ++shown->drawn;
    }
    void makeKeyAndOrderFront() override { ++shown->broughtForward; }
    std::shared_ptr<Shown> shown;
  };
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
  VirtualApplication application;
  VirtualHttp http;
  VirtualSafari safari;
  VirtualLogin login;
  VirtualSettingsWindows settingsWindows;

  Platform platform() {
    return {queue,     clock,     dates,       defaults,    locations, files,  bundle, children,        processes,
            workspace, statusBar, application, application, http,      safari, login,  settingsWindows, macWording};
  }
};

}  // namespace tollvane::test
