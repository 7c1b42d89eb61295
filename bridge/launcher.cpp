#include "launcher.h"

#include <algorithm>
#include <string>

#include "platform/linux/apps/bundle_ids.h"
#include "platform/linux/apps/file_bytes.h"

namespace tollvane::bridge {
namespace {

constexpr std::size_t kLongestFlatpakInfo = 64 * 1024;

struct Program {
  std::string_view ending;  // of its path
  std::string_view desktopID;
};

// Of packages that are neither a Flatpak nor a Snap, which tell their name themselves.
constexpr Program kPrograms[] = {
    {"/google/chrome/chrome", "google-chrome"},
    {"/google/chrome-beta/chrome", "google-chrome-beta"},
    {"/google/chrome-unstable/chrome", "google-chrome-unstable"},
    {"/google/chrome-canary/chrome", "google-chrome-canary"},
    {"/microsoft/msedge/msedge", "microsoft-edge"},
    {"/microsoft/msedge-beta/msedge", "microsoft-edge-beta"},
    {"/microsoft/msedge-dev/msedge", "microsoft-edge-dev"},
    {"/brave/brave", "brave-browser"},
    {"/brave-beta/brave", "brave-browser-beta"},
    {"/brave-nightly/brave", "brave-browser-nightly"},
    {"/chromium/chromium", "chromium"},
    {"/chromium/chrome", "chromium"},
    {"/chromium-browser/chromium-browser", "chromium"},
    {"/chromium-browser/chrome", "chromium"},
    {"/firefox/firefox", "firefox"},
    {"/firefox/firefox-bin", "firefox"},
    {"/firefox-esr/firefox-esr", "firefox"},
    {"/firefox-developer-edition/firefox", "firefox-developer-edition"},
    {"/firefox-devedition/firefox", "firefox-devedition"},
    {"/firefox-nightly/firefox", "firefox-nightly"},
    {"/vivaldi/vivaldi-bin", "vivaldi"},
    {"/opera/opera", "opera"},
};

bool isIdentifier(std::string_view text) {
  constexpr std::string_view allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.-_";
  return !text.empty() && text.size() <= 255 && text.find_first_not_of(allowed) == std::string_view::npos;
}

std::string_view before(std::string_view text, std::string_view mark) { return text.substr(0, text.find(mark)); }

// The `name` of the group with which the file begins: of an application, or of a runtime.
std::string_view flatpakName(std::string_view info) {
  bool inFirstGroup = false;
  while (!info.empty()) {
    const auto line = before(info, "\n");
    info.remove_prefix(std::min(line.size() + 1, info.size()));
    if (line.starts_with('[') && inFirstGroup) return {};
    inFirstGroup = inFirstGroup || line.starts_with('[');
    if (inFirstGroup && line.starts_with("name=")) return line.substr(5);
  }
  return {};
}

// Snaps are mounted at /snap or /var/lib/snapd/snap, as NAME/REVISION.
std::string_view snapOf(std::string_view executable) {
  for (const std::string_view root : {"/snap/", "/var/lib/snapd/snap/"})
    if (executable.starts_with(root)) return before(executable.substr(root.size()), "/");
  return {};
}

std::string_view bundleOfSnap(std::string_view name) {
  if (name.empty()) return {};
  // The desktop entry NAME of the snap NAME: how a snap's main program is called.
  return bundleOfDesktopId(std::string(name).append("_").append(name));
}

std::string_view bundleOfProgram(std::string_view executable) {
  const auto* const found = std::find_if(std::begin(kPrograms), std::end(kPrograms),
                                         [&](const Program& program) { return executable.ends_with(program.ending); });
  return found == std::end(kPrograms) ? std::string_view() : bundleOfDesktopId(found->desktopID);
}

std::string_view bundleOfHints(const Launcher& launcher) {
  const auto snap = bundleOfSnap(launcher.snapName);
  if (!snap.empty() || !launcher.isChromium) return snap;
  return bundleOfDesktopId(before(launcher.chromeDesktop, ".desktop"));
}

}  // namespace

Launcher launcher(const ProcFs& processes, Pid parent, const std::vector<std::string>& arguments,
                  const Variable& variable) {
  const auto value = [&](const char* name) -> std::string {
    const char* const text = variable(name);
    return text ? text : "";
  };
  const std::string root = (processes.root() / std::to_string(parent) / "root").native();
  return {.executable = processes.executable(parent).value_or(""),
          .flatpakInfo = readPlainFile(root + "/.flatpak-info", kLongestFlatpakInfo).value_or(""),
          .isChromium = !arguments.empty() && arguments.front().starts_with("chrome-extension://"),
          .snapName = value("SNAP_NAME"),
          .chromeDesktop = value("CHROME_DESKTOP")};
}

std::string bundleIdentifier(const Launcher& launcher) {
  const std::string_view flatpak = flatpakName(launcher.flatpakInfo);
  if (isIdentifier(flatpak)) {
    const auto known = bundleOfDesktopId(flatpak);
    return std::string(known.empty() ? flatpak : known);
  }
  for (const auto bundle : {bundleOfSnap(snapOf(launcher.executable)), bundleOfProgram(launcher.executable)})
    if (!bundle.empty()) return std::string(bundle);
  return std::string(bundleOfHints(launcher));
}

std::string introduction(const Launcher& launcher) {
  const std::string bundle = bundleIdentifier(launcher);
  if (bundle.empty()) return R"({"type":"bridge"})";
  return R"({"type":"bridge","bundleID":")" + bundle + R"("})";
}

}  // namespace tollvane::bridge
