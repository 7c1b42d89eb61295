#include <CoreFoundation/CoreFoundation.h>
#include <pwd.h>
#include <sys/event.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>

#include "bridge/application_bundle.h"
#include "bridge/browser_process.h"
#include "bridge/introduction.h"
#include "platform/macos/kernel/kernel_process.h"

namespace tollvane::bridge {
namespace {

// A queue of the kernel can itself be waited for. It holds no descriptor if the process has ended already.
UniqueFd endOf(Pid process) {
  UniqueFd queue(::kqueue());
  struct kevent end;
  EV_SET(&end, process, EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
  if (!queue || ::kevent(queue.get(), &end, 1, nullptr, 0, nullptr) != 0) return {};
  return queue;
}

std::string text(CFStringRef string) {
  std::array<char, 256> bytes{};
  const bool fits = string != nullptr && CFStringGetCString(string, bytes.data(), bytes.size(), kCFStringEncodingUTF8);
  return fits ? std::string(bytes.data()) : std::string();
}

// The frameworks that know running applications take ten times as much memory as the bridge does.
std::string identifierOf(const std::filesystem::path& application) {
  std::string identifier;
  const auto* path = reinterpret_cast<const unsigned char*>(application.c_str());
  const auto length = static_cast<CFIndex>(application.native().size());
  const CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, path, length, true);
  if (url == nullptr) return identifier;
  if (const CFBundleRef bundle = CFBundleCreate(nullptr, url)) {
    identifier = text(CFBundleGetIdentifier(bundle));
    CFRelease(bundle);
  }
  CFRelease(url);
  return identifier;
}

}  // namespace

BrowserProcess browserProcess(Pid parent, const std::vector<std::string>&) {
  BrowserProcess browser;
  browser.end = endOf(parent);
  browser.introduction = introductionOf(identifierOf(applicationBundle(programPath(parent))));
  if (const auto process = kernelProcess(parent))
    browser.name = std::to_string(parent) + '-' + std::to_string(process->startTime);
  return browser;
}

std::filesystem::path ownProgram() { return programPath(::getpid()); }

std::optional<std::filesystem::path> applicationSupport() {
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home != '/') {
    const passwd* user = ::getpwuid(::getuid());
    home = user == nullptr ? nullptr : user->pw_dir;
  }
  if (home == nullptr || *home != '/') return std::nullopt;
  return std::filesystem::path(home) / "Library/Application Support";
}

std::optional<std::filesystem::path> socketFolder() { return std::nullopt; }

// A program on macOS is restricted by the entitlements that it is signed with.
void giveUpRights() {}

}  // namespace tollvane::bridge
