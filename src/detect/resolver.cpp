#include "detect/resolver.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tollvane {
namespace {

// Process names that tell a user nothing, and what to show instead. Two of them are cut to 16 characters, because that
// is how the sound daemons report them.
constexpr std::array<std::pair<std::string_view, std::string_view>, 8> friendly = {{
    {"afplay", "Terminal sound (afplay)"},
    {"osascript", "Script (osascript)"},
    {"NotificationCent", "Notification Center"},
    {"systemsoundserve", "macOS system sound"},
    {"imagent", "Messages"},
    {"PowerChime", "Charger chime"},
    {"screencapture", "Screenshot"},
    {"", "Unknown app"},
}};

constexpr int mostAncestors = 7;

std::string friendlyName(std::string_view name) {
  for (const auto& [process, display] : friendly)
    if (process == name) return std::string(display);
  return std::string(name);
}

std::string withoutAll(std::string text, std::string_view part) {
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at)) text.erase(at, part.size());
  return text;
}

}  // namespace

Pid Resolver::living(Pid pid, std::span<const Pid> ancestors) const {
  const auto runs = [this](Pid each) { return processes_.parentPid(each).has_value(); };
  if (ancestors.empty() || runs(pid)) return pid;
  const auto first = std::find_if(ancestors.begin(), ancestors.end(), runs);
  return first == ancestors.end() ? pid : *first;
}

std::optional<Pid> Resolver::responsiblePid(Pid pid) const {
  const auto responsible = processes_.responsiblePid(pid);
  return responsible && *responsible >= 1 ? responsible : std::nullopt;
}

std::optional<RunningApplication> Resolver::regularApp(Pid pid) const {
  if (const auto responsible = responsiblePid(pid)) {
    if (auto application = workspace_.regularApplication(*responsible)) return application;
  }
  for (int budget = mostAncestors; pid >= 2; --budget) {
    if (auto application = workspace_.regularApplication(pid)) return application;
    const auto parent = processes_.parentPid(pid);
    if (!parent || *parent == pid || budget == 0) break;
    pid = *parent;
  }
  return std::nullopt;
}

RunningApplication Resolver::mainProcess(RunningApplication application) const {
  for (int budget = mostAncestors; budget > 0; --budget) {
    const auto parent = processes_.parentPid(application.pid);
    if (!parent || *parent < 2 || *parent == application.pid) break;
    auto starter = workspace_.regularApplication(*parent);
    if (!starter || starter->localizedName != application.localizedName) break;
    application = *std::move(starter);
  }
  return application;
}

std::string Resolver::appName(Pid pid, std::string_view fallback,
                              const std::optional<RunningApplication>& application) const {
  if (application && application->localizedName) return *application->localizedName;
  if (const auto itself = workspace_.runningApplication(pid); itself && itself->localizedName)
    return friendlyName(*itself->localizedName);
  return friendlyName(fallback);
}

std::string Resolver::appName(std::string_view bundleID) const {
  auto running = workspace_.runningApplications(bundleID);
  if (!running.empty() && running.front().localizedName) return *std::move(running.front().localizedName);
  if (const auto url = workspace_.urlForApplication(bundleID)) return withoutAll(workspace_.displayName(*url), ".app");
  return std::string(bundleID);
}

std::vector<std::string> Resolver::appNames(std::string_view bundleID) const {
  std::vector<std::string> names = workspace_.names(bundleID);
  for (std::string& name : names) name = withoutAll(std::move(name), ".app");
  if (names.empty()) names.emplace_back(bundleID);
  return names;
}

std::optional<std::filesystem::path> Resolver::appURL(std::string_view named) const {
  for (const auto& folder : locations_.applicationFolders()) {
    std::filesystem::path bundle = folder.string() + "/" + std::string(named) + ".app";
    if (files_.exists(bundle)) return bundle;
  }
  return workspace_.urlForApplicationNamed(named);
}

}  // namespace tollvane
