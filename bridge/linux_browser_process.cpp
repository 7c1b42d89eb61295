#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>

#include "bridge/browser_process.h"
#include "bridge/parent_browser.h"
#include "platform/linux/kernel/folders.h"
#include "platform/linux/sandbox/sandbox.h"

namespace tollvane::bridge {

BrowserProcess browserProcess(Pid parent, const std::vector<std::string>& arguments) {
  BrowserProcess browser;
  // glibc 2.36 declares its own pidfd_open for C only. PR_SET_PDEATHSIG would be too early: that signal is sent when
  // the thread that started us ends, which need not be the browser's last.
  browser.end = UniqueFd(static_cast<int>(syscall(SYS_pidfd_open, parent, 0)));
  browser.introduction =
      introduction(parentBrowser(ProcFs(), parent, arguments, [](const char* name) { return std::getenv(name); }));
  browser.name = processName(ProcFs(), parent);
  return browser;
}

std::filesystem::path ownProgram() { return ProcFs().executable(getpid()).value_or(""); }

std::optional<std::filesystem::path> applicationSupport() { return dataFolder(); }
std::optional<std::filesystem::path> socketFolder() { return runtimeFolder(); }

void giveUpRights() {
#ifndef TOLLVANE_SANITIZED  // sanitizers look into processes and write reports
  enterSandbox(Sandbox::relay);
#endif
}

}  // namespace tollvane::bridge
