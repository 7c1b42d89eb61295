#include "platform/linux/workspace/linux_workspace.h"

#include <algorithm>
#include <utility>

#include "catalogue/browsers.h"
#include "support/text.h"

namespace tollvane {

LinuxWorkspace::LinuxWorkspace(const Applications& applications, const Clock& clock, WindowRaiser& windows,
                               Launcher& launcher)
    : applications_(applications), processes_(applications, clock), windows_(windows), launcher_(launcher) {}

std::optional<RunningApplication> LinuxWorkspace::runningApplication(Pid pid) const {
  const auto application = applications_.of(pid);
  if (!application) return std::nullopt;
  return running(pid, *application);
}

RunningApplication LinuxWorkspace::running(Pid pid, const Ownership& application) const {
  RunningApplication running;
  running.pid = pid;
  running.activationPolicy = application.isRegular() ? ActivationPolicy::regular : ActivationPolicy::accessory;
  running.localizedName = applications_.nameOf(pid, application);
  if (running.localizedName->empty()) running.localizedName.reset();
  return running;
}

std::vector<RunningApplication> LinuxWorkspace::runningApplications(std::string_view bundleID) const {
  const auto wanted = installed(bundleID);
  if (wanted.empty()) return {};
  return oldestFirst(processes_.of(wanted, editionOfBundle(bundleID) != nullptr));
}

std::vector<RunningApplication> LinuxWorkspace::runningApplications() const { return oldestFirst(processes_.all()); }

std::vector<RunningApplication> LinuxWorkspace::oldestFirst(std::vector<ApplicationProcess> found) const {
  std::sort(found.begin(), found.end(), [](const auto& one, const auto& other) {
    return std::pair(one.startTime, one.pid) < std::pair(other.startTime, other.pid);
  });
  std::vector<RunningApplication> applications;
  for (const auto& process : found) applications.push_back(running(process.pid, process.application));
  return applications;
}

std::optional<std::filesystem::path> LinuxWorkspace::urlForApplication(std::string_view bundleID) const {
  const auto entries = installed(bundleID);
  if (entries.empty()) return std::nullopt;
  return entries.front()->path;
}

std::optional<std::filesystem::path> LinuxWorkspace::urlForApplicationNamed(std::string_view displayName) const {
  applications_.entries().refresh();
  const auto entry = applications_.entries().named(displayName);
  if (entry == nullptr) return std::nullopt;
  return entry->path;
}

std::string LinuxWorkspace::displayName(const std::filesystem::path& path) const {
  DesktopEntries& entries = applications_.entries();
  if (path.extension() == desktopFileEnding) {
    entries.refresh();
    if (const auto entry = entries.withPath(path.native()); entry != nullptr && !entry->name.empty())
      return entry->name;
    const auto loose = readDesktopEntry(path.native(), entries.environment().currentDesktop);
    if (loose && !loose->name.empty()) return loose->name;
  }
  const auto name = path.has_filename() ? path.filename() : path.parent_path().filename();
  return sanitized(name.native());
}

void LinuxWorkspace::activate(const RunningApplication& application, std::function<void(bool)> done) {
  const auto known = applications_.of(application.pid);
  if (!known) return done(false);
  windows_.raise(targetOf(application.pid, *known),
                 [done = std::move(done)](Raised raised) { done(raised != Raised::noWindow); });
}

ActivationTarget LinuxWorkspace::targetOf(Pid pid, const Ownership& application) const {
  ActivationTarget target{.pid = pid, .others = {}, .hosts = hostsOf(pid, application), .entry = application.entry};
  if (application.entry == nullptr) return target;
  for (const auto& process : processes_.of({application.entry}, false))
    if (process.pid != pid) target.others.push_back(process.pid);
  return target;
}

// A program that runs in a terminal is to be found there. Other parents have merely started it.
std::vector<Pid> LinuxWorkspace::hostsOf(Pid pid, const Ownership& application) const {
  constexpr int furthest = 16;
  std::vector<Pid> hosts;
  for (int i = 0; i < furthest; ++i) {
    const auto parentPid = applications_.processes().parentPid(pid);
    if (!parentPid || *parentPid <= 1) break;
    pid = *parentPid;
    const auto parent = applications_.of(pid);
    if (!parent || parent->isBackground()) continue;
    if (parent->entry != nullptr && parent->entry == application.entry) continue;
    if (parent->entry != nullptr && parent->entry->isTerminalEmulator) hosts.push_back(pid);
    break;
  }
  return hosts;
}

void LinuxWorkspace::open(const std::filesystem::path& path) {
  if (!path.is_absolute()) return;
  if (path.extension() == desktopFileEnding) {
    launcher_.launch(path, {}, [](bool) {});
  } else {
    launcher_.open(path.string(), [](bool) {});
  }
}

void LinuxWorkspace::openURL(std::string_view url) {
  if (text::isWebPage(url)) launcher_.open(std::string(url), [](bool) {});
}

void LinuxWorkspace::openURL(std::string_view url, const std::filesystem::path& application,
                             std::function<void(bool)> done) {
  if (!text::isWebPage(url) || !application.is_absolute()) return done(false);
  launcher_.launch(application, {std::string(url)}, std::move(done));
}

std::vector<DesktopEntries::Entry> LinuxWorkspace::installed(std::string_view bundleID) const {
  DesktopEntries& entries = applications_.entries();
  entries.refresh();
  std::vector<DesktopEntries::Entry> found;
  for (const std::string_view id : desktopIdsOfBundle(bundleID)) {
    const auto entry = entries.withId(id);
    if (entry == nullptr || entry->hidden || !entry->installed) continue;
    if (std::find(found.begin(), found.end(), entry) == found.end()) found.push_back(entry);
  }
  return found;
}

}  // namespace tollvane
