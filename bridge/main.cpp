// The entry point of TollvaneBridge. The browser starts it with frames on standard input and output, and nothing but
// frames may ever be written to standard output. File descriptors that the browser left open stay open: Firefox notices
// by one of them that its program has ended.
#include <fcntl.h>
#include <sys/syscall.h>
#include <sysexits.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "bridge/application_sockets.h"
#include "bridge/bridge.h"
#include "bridge/parent_browser.h"
#include "platform/linux/kernel/folders.h"

namespace tollvane::bridge {
namespace {

// glibc 2.36 declares its own pidfd_open for C only.
UniqueFd processDescriptor(pid_t process) { return UniqueFd(static_cast<int>(syscall(SYS_pidfd_open, process, 0))); }

bool makeNonBlocking(int descriptor) {
  const int flags = fcntl(descriptor, F_GETFL);
  return flags >= 0 && fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0;
}

int run(const std::vector<std::string>& arguments) {
  const pid_t browser = getppid();
  if (!makeNonBlocking(STDIN_FILENO) || !makeNonBlocking(STDOUT_FILENO)) return EX_USAGE;
  // If standard error is closed, give its number to /dev/null: otherwise a socket of ours would get it, and libraries
  // would write into that.
  if (fcntl(STDERR_FILENO, F_GETFD) < 0) open("/dev/null", O_WRONLY);
  // PR_SET_PDEATHSIG would be too early: that signal is sent when the thread that started us ends, which need not be
  // the browser's last.
  UniqueFd browserProcess = processDescriptor(browser);
  const auto launchedBy =
      parentBrowser(ProcFs(), browser, arguments, [](const char* name) { return std::getenv(name); });
  Relay relay(introduction(launchedBy), processName(ProcFs(), browser));
  if (getppid() != browser) return EX_OK;
  std::signal(SIGPIPE, SIG_IGN);
  const auto sockets = applicationSockets(ProcFs().executable(getpid()).value_or(""), dataFolder());
  if (sockets.empty()) return EX_CONFIG;
  Bridge bridge({STDIN_FILENO, STDOUT_FILENO, std::move(browserProcess)}, sockets, std::move(relay));
  bridge.run();
  return EX_OK;
}

}  // namespace
}  // namespace tollvane::bridge

int main(int count, char** arguments) {
  try {
    return tollvane::bridge::run({arguments + (count > 0), arguments + count});
  } catch (const std::exception&) {
    return EX_OSERR;  // out of memory; the extension starts another bridge
  }
}
