#include "platform/linux/workspace/linux_workspace.h"

#include <algorithm>
#include <utility>

#include "catalogue/browsers.h"
#include "platform/linux/apps/desktop_session.h"
#include "support/text.h"

namespace tollvane {

LinuxWorkspace::LinuxWorkspace(const Applications& applications, const Clock& clock, WindowRaiser& windows,
                               Launcher& launcher)
    : applications_(applications),
      processes_(applications, clock),
      browsers_(applications, clock),
      windows_(windows),
      launcher_(launcher) {}

// A browser without a desktop entry is an ordinary application all the same, even if it has no window that we see.
std::optional<Ownership> LinuxWorkspace::ownership(Pid pid, Applications::Wanted wanted) const {
  applications_.entries().refresh();
  RunningProgram program = applications_.program(pid);
  return ownership(program, wanted);
}

std::optional<Ownership> LinuxWorkspace::ownership(RunningProgram& program, Applications::Wanted wanted) const {
  auto application = applications_.of(program, wanted);
  if (application && application->entry != nullptr) return application;
  if (browsers_.editionOf(program) == nullptr) return application;
  if (!application) application.emplace();
  application->hasWindow = true;
  return application;
}

std::optional<RunningApplication> LinuxWorkspace::runningApplication(Pid pid) const {
  return running(pid, Applications::Wanted::any);
}

std::optional<RunningApplication> LinuxWorkspace::regularApplication(Pid pid) const {
  return running(pid, Applications::Wanted::regular);
}

std::optional<RunningApplication> LinuxWorkspace::running(Pid pid, Applications::Wanted wanted) const {
  const auto application = ownership(pid, wanted);
  if (!application || (wanted == Applications::Wanted::regular && !application->isRegular())) return std::nullopt;
  return running(pid, applications_.processes().status(pid).value_or(ProcFs::Status{}).startTime, *application);
}

RunningApplication LinuxWorkspace::running(Pid pid, std::uint64_t startTime, const Ownership& application) const {
  RunningApplication running;
  running.pid = pid;
  running.activationPolicy = application.isRegular() ? ActivationPolicy::regular : ActivationPolicy::accessory;
  const BrowserEdition* const browser = application.entry == nullptr ? browsers_.editionOf(pid) : nullptr;
  running.localizedName = browser && !browser->family.empty() ? std::string(mainRelease(browser->family)->name)
                                                              : applications_.nameOf(pid, application);
  if (running.localizedName->empty()) running.localizedName.reset();
  running.startTime = startTime;
  return running;
}

std::vector<RunningApplication> LinuxWorkspace::runningApplications(std::string_view bundleID) const {
  const BrowserEdition* const edition = editionOfBundle(bundleID);
  const auto wanted = installed(bundleID);
  std::vector<ApplicationProcess> found;
  if (!wanted.empty()) found = processes_.of(wanted, edition != nullptr);
  if (edition != nullptr) add(browsers_.running(*edition), found);
  return oldestFirst(std::move(found));
}

std::vector<RunningApplication> LinuxWorkspace::regularApplications() const {
  return oldestFirst(processes_.all([&](RunningProgram& program) -> std::optional<Ownership> {
    auto application = ownership(program, Applications::Wanted::regular);
    if (application && !isInThisDesktopSession(applications_.processes(), program.pid())) return std::nullopt;
    return application;
  }));
}

// Adds those of the browsers' processes that belong to no desktop entry. Those that belong to one were found by it.
void LinuxWorkspace::add(const std::vector<Pid>& browsers, std::vector<ApplicationProcess>& found) const {
  for (const Pid pid : browsers) {
    if (std::any_of(found.begin(), found.end(), [&](const auto& each) { return each.pid == pid; })) continue;
    auto application = ownership(pid);
    const auto status = application ? applications_.processes().status(pid) : std::nullopt;
    if (status && application->entry == nullptr) found.push_back({pid, status->startTime, *std::move(application)});
  }
}

std::vector<RunningApplication> LinuxWorkspace::oldestFirst(std::vector<ApplicationProcess> found) const {
  std::sort(found.begin(), found.end(), [](const auto& one, const auto& other) {
    return std::pair(one.startTime, one.pid) < std::pair(other.startTime, other.pid);
  });
  std::vector<RunningApplication> applications;
  for (const auto& process : found)
    applications.push_back(running(process.pid, process.startTime, process.application));
  return applications;
}

// The processes of an entry have its name, and those of a browser without an entry have their family's.
std::vector<std::string> LinuxWorkspace::names(std::string_view bundleID) const {
  std::vector<std::string> names;
  for (const auto& entry : installed(bundleID))
    if (!entry->name.empty()) names.push_back(entry->name);
  return names;
}

std::optional<std::filesystem::path> LinuxWorkspace::urlForApplication(std::string_view bundleID) const {
  // A browser without its program is not there to be offered; any other entry still gives its application a name.
  const bool isBrowser = editionOfBundle(bundleID) != nullptr;
  for (const auto& entry : installed(bundleID))
    if (entry->canStart || !isBrowser) return entry->path;
  return std::nullopt;
}

std::optional<std::filesystem::path> LinuxWorkspace::urlForApplicationNamed(std::string_view displayName) const {
  applications_.entries().refresh();
  const auto entry = applications_.entries().named(displayName);
  if (entry == nullptr || !entry->canStart) return std::nullopt;
  return entry->path;
}

std::string LinuxWorkspace::icon(std::string_view bundleID) const {
  for (const auto& entry : installed(bundleID))
    if (!entry->icon.empty()) return entry->icon;
  return {};
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

void LinuxWorkspace::activate(const RunningApplication& application, std::string_view title,
                              std::function<void(bool)> done) {
  const auto known = ownership(application.pid);
  if (!known) return done(false);
  ActivationTarget target = targetOf(application.pid, *known);
  target.title = title;
  windows_.raise(target, [done = std::move(done)](Raised raised) { done(raised != Raised::noWindow); });
}

ActivationTarget LinuxWorkspace::targetOf(Pid pid, const Ownership& application) const {
  ActivationTarget target{.pid = pid, .entry = application.entry};
  addAncestors(target);
  if (application.entry == nullptr) return target;
  for (const auto& process : processes_.of({application.entry}, false))
    if (process.pid != pid) target.others.push_back(process.pid);
  return target;
}

// The window of a program that runs in a terminal is the terminal's, and the window of a helper is its own
// application's. Other parents have merely started it.
void LinuxWorkspace::addAncestors(ActivationTarget& target) const {
  constexpr int furthest = 16;
  Pid pid = target.pid;
  for (int i = 0; i < furthest; ++i) {
    const auto parentPid = applications_.processes().parentPid(pid);
    if (!parentPid || *parentPid <= 1) break;
    pid = *parentPid;
    const auto parent = applications_.of(pid);
    if (!parent || parent->isBackground()) continue;
    // By their ids, because an entry may be read again meanwhile.
    if (parent->entry != nullptr && target.entry != nullptr && parent->entry->id == target.entry->id) {
      target.starters.push_back(pid);
      continue;
    }
    if (parent->entry != nullptr && parent->entry->isTerminalEmulator) target.hosts.push_back(pid);
    break;
  }
}

void LinuxWorkspace::open(const std::filesystem::path& path, std::function<void(bool)> done) {
  if (!path.is_absolute()) return done(false);
  if (path.extension() == desktopFileEnding) {
    launcher_.launch(path, {}, std::move(done));
  } else {
    launcher_.open(path.string(), std::move(done));
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
  const auto add = [&](const DesktopEntries::Entry& entry) {
    if (entry == nullptr || entry->hidden || !entry->installed) return;
    if (std::find(found.begin(), found.end(), entry) == found.end()) found.push_back(entry);
  };
  for (const std::string_view id : desktopIdsOfBundle(bundleID)) add(entries.withId(id));
  if (const BrowserEdition* const edition = editionOfBundle(bundleID))
    for (const auto& entry : browsers_.entries(*edition)) add(entry);
  return found;
}

}  // namespace tollvane
