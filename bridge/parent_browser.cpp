#include "bridge/parent_browser.h"

#include <algorithm>
#include <string>

#include "bridge/introduction.h"
#include "catalogue/browsers.h"
#include "platform/posix/posix_files.h"
#include "support/ascii.h"

namespace tollvane::bridge {
namespace {

constexpr std::size_t longestFlatpakInfo = 64 * 1024;

std::string_view bundleOf(const BrowserEdition* edition) {
  return edition == nullptr ? std::string_view() : edition->bundleID;
}

// The `name` in the file's first group, which describes an application or a runtime.
std::string_view flatpakName(std::string_view info) {
  bool inFirstGroup = false;
  while (!info.empty()) {
    const auto line = ascii::takePart(info, '\n');
    if (line.starts_with('[') && inFirstGroup) return {};
    inFirstGroup = inFirstGroup || line.starts_with('[');
    if (inFirstGroup && line.starts_with("name=")) return line.substr(5);
  }
  return {};
}

// Snaps are mounted at /snap or /var/lib/snapd/snap, as NAME/REVISION.
std::string_view snapOf(std::string_view executable) {
  for (const std::string_view root : {"/snap/", "/var/lib/snapd/snap/"}) {
    if (!executable.starts_with(root)) continue;
    executable.remove_prefix(root.size());
    return ascii::takePart(executable, '/');
  }
  return {};
}

std::string_view bundleOfSnap(std::string_view name) {
  if (name.empty()) return {};
  // The main program of the snap NAME has the desktop entry NAME_NAME.
  return bundleOf(editionOfDesktopId(std::string(name).append("_").append(name)));
}

std::string_view bundleOfHints(const ParentBrowser& parent) {
  const auto snap = bundleOfSnap(parent.snapName);
  if (!snap.empty() || !parent.isChromium) return snap;
  const std::string_view entry = parent.chromeDesktop;
  return bundleOf(editionOfDesktopId(entry.substr(0, entry.find(".desktop"))));
}

}  // namespace

ParentBrowser parentBrowser(const ProcFs& processes, Pid parent, const std::vector<std::string>& arguments,
                            const Variable& variable) {
  const auto value = [&](const char* name) -> std::string {
    const char* const text = variable(name);
    return text ? text : "";
  };
  const std::string root = (processes.root() / std::to_string(parent) / "root").native();
  return {.executable = processes.executable(parent).value_or(""),
          .flatpakInfo = readPlainFile(root + "/.flatpak-info", longestFlatpakInfo).value_or(""),
          .isChromium = !arguments.empty() && arguments.front().starts_with("chrome-extension://"),
          .snapName = value("SNAP_NAME"),
          .chromeDesktop = value("CHROME_DESKTOP")};
}

std::string bundleIdentifier(const ParentBrowser& parent) {
  const std::string_view flatpak = flatpakName(parent.flatpakInfo);
  if (isIdentifier(flatpak)) {
    const auto known = bundleOf(editionOfDesktopId(flatpak));
    return std::string(known.empty() ? flatpak : known);
  }
  for (const auto bundle : {bundleOfSnap(snapOf(parent.executable)), bundleOf(editionOfProgram(parent.executable))})
    if (!bundle.empty()) return std::string(bundle);
  return std::string(bundleOfHints(parent));
}

std::string processName(const ProcFs& processes, Pid process) {
  constexpr std::size_t longestBoot = 64;
  constexpr std::string_view allowed = "0123456789abcdef-";
  const auto status = processes.status(process);
  std::string boot =
      readKernelFile((processes.root() / "sys/kernel/random/boot_id").native(), longestBoot).value_or("");
  boot.erase(std::min(boot.find('\n'), boot.size()));
  if (!status || boot.empty() || boot.find_first_not_of(allowed) != std::string::npos) return {};
  return boot + '-' + std::to_string(process) + '-' + std::to_string(status->startTime);
}

std::string introduction(const ParentBrowser& parent) { return introductionOf(bundleIdentifier(parent)); }

}  // namespace tollvane::bridge
