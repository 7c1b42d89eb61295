// The entry point of TollvaneBridge. The browser starts it with frames on standard input and output, and nothing but
// frames may ever be written to standard output. File descriptors that the browser left open stay open: Firefox notices
// by one of them that its program has ended.
#include <fcntl.h>
#include <sysexits.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "bridge/application_sockets.h"
#include "bridge/bridge.h"
#include "bridge/browser_process.h"

namespace tollvane::bridge {
namespace {

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
  BrowserProcess launchedBy = browserProcess(browser, arguments);
  Relay relay(std::move(launchedBy.introduction), std::move(launchedBy.name));
  if (getppid() != browser) return EX_OK;
  std::signal(SIGPIPE, SIG_IGN);
  const auto sockets = applicationSockets(ownProgram(), applicationSupport(), socketFolder());
  if (sockets.empty()) return EX_CONFIG;
  giveUpRights();
  Bridge bridge({STDIN_FILENO, STDOUT_FILENO, std::move(launchedBy.end)}, sockets, std::move(relay));
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
