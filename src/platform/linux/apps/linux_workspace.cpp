#include "platform/linux/apps/linux_workspace.h"

#include <algorithm>
#include <utility>

#include "platform/linux/apps/bundle_ids.h"

namespace tollvane {

LinuxWorkspace::LinuxWorkspace(const ProcFs& processes, const Applications& applications)
    : processes_(processes), applications_(applications) {}

std::optional<RunningApplication> LinuxWorkspace::runningApplication(Pid pid) const {
  const auto application = applications_.of(pid);
  if (!application) return std::nullopt;
  RunningApplication running;
  running.pid = pid;
  running.activationPolicy = application->isRegular() ? ActivationPolicy::regular : ActivationPolicy::accessory;
  running.localizedName = applications_.nameOf(pid, *application);
  if (running.localizedName->empty()) running.localizedName.reset();
  return running;
}

std::vector<RunningApplication> LinuxWorkspace::runningApplications(std::string_view bundleID) const {
  const auto wanted = installed(bundleID);
  if (wanted.empty()) return {};
  std::vector<std::pair<std::uint64_t, Pid>> found;  // by age
  for (const Pid pid : applications_.processesOf(wanted, isKnownBundle(bundleID))) {
    if (const auto status = processes_.status(pid)) found.emplace_back(status->startTime, pid);
  }
  std::sort(found.begin(), found.end());
  std::vector<RunningApplication> running;
  for (const auto& [startTime, pid] : found) {
    if (auto application = runningApplication(pid)) running.push_back(std::move(*application));
  }
  return running;
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
  if (path.extension() == ".desktop") {
    entries.refresh();
    if (const auto entry = entries.withPath(path.native()); entry != nullptr && !entry->name.empty())
      return entry->name;
    const auto loose = readDesktopEntry(path.native(), entries.environment().currentDesktop);
    if (loose && !loose->name.empty()) return loose->name;
  }
  const auto name = path.has_filename() ? path.filename() : path.parent_path().filename();
  return sanitized(name.native());
}

std::vector<DesktopEntries::Entry> LinuxWorkspace::installed(std::string_view bundleID) const {
  DesktopEntries& entries = applications_.entries();
  entries.refresh();
  std::vector<DesktopEntries::Entry> found;
  for (const std::string& id : desktopIdsOfBundle(bundleID)) {
    const auto entry = entries.withId(id);
    if (entry == nullptr || entry->hidden || !entry->installed) continue;
    if (std::find(found.begin(), found.end(), entry) == found.end()) found.push_back(entry);
  }
  return found;
}

}  // namespace tollvane
