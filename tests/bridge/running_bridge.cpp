#include "tests/bridge/running_bridge.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace tollvane::test {
namespace {

struct Pipe {
  UniqueFd reader, writer;
};

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

std::vector<std::string> environment(const std::filesystem::path& dataHome, const Variables& further) {
  Variables variables = ownVariables();
  for (const char* hint : {"CHROME_DESKTOP", "SNAP_NAME", "XDG_RUNTIME_DIR"}) variables.erase(hint);
  for (const auto& [name, value] : further) variables[name] = value;
  variables["XDG_DATA_HOME"] = dataHome;
  std::vector<std::string> result;
  for (const auto& [name, value] : variables) result.push_back(name + "=" + value);
  return result;
}

// If a browser is wanted, a shell stands in for it, as a program of that name. "exit 0" keeps the shell from replacing
// itself with the bridge.
std::vector<std::string> command(const RunningBridge::Options& options) {
  std::vector<std::string> result = {TOLLVANE_BRIDGE};
  if (options.copy) {
    std::filesystem::create_directories(options.copy->parent_path());
    std::filesystem::copy_file(TOLLVANE_BRIDGE, *options.copy);
    result = {*options.copy};
  }
  if (options.browser) {
    std::filesystem::create_directories(options.browser->parent_path());
    std::filesystem::copy_file("/bin/sh", *options.browser);
    result = {*options.browser, "-c", "\"$0\" \"$@\"; exit 0", TOLLVANE_BRIDGE};
  }
  result.insert(result.end(), options.arguments.begin(), options.arguments.end());
  return result;
}

}  // namespace

RunningBridge::RunningBridge(const std::filesystem::path& dataHome, const Options& options) {
  std::signal(SIGPIPE, SIG_IGN);
  Pipe in = makePipe(), out = makePipe(), extra = makePipe();
  auto words = command(options);
  auto assignments = environment(dataHome, options.variables);
  const auto arguments = pointers(words), variables = pointers(assignments);
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);
    std::signal(SIGPIPE, SIG_DFL);
    dup2(in.reader.get(), STDIN_FILENO);
    dup2(out.writer.get(), STDOUT_FILENO);
    // This comes last, because descriptor 3 may have been one of the other pipes.
    if (options.strayDescriptor && dup2(extra.writer.get(), 3) == extra.writer.get()) fcntl(3, F_SETFD, 0);
    execve(arguments[0], arguments.data(), variables.data());
    _exit(127);
  }
  if (pid_ < 0) throw std::runtime_error("cannot start the bridge");
  input = Wire(std::move(in.writer));
  output = Wire(std::move(out.reader));
  stray = Wire(std::move(extra.reader));
}

RunningBridge::~RunningBridge() {
  input.close();
  if (!exitCode()) kill();
}

void RunningBridge::kill() {
  if (ended()) return;
  ::kill(pid_, SIGKILL);
  exitCode();
}

std::optional<int> RunningBridge::exitCode() {
  waitUntil([this] { return ended(); });
  return exitCode_;
}

bool RunningBridge::ended() {
  if (exitCode_) return true;
  int status = 0;
  const pid_t result = waitpid(pid_, &status, WNOHANG);
  if (result == 0) return false;
  exitCode_ = result < 0 ? -1 : WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return true;
}

bool RunningBridge::readsAll() {
  return waitUntil([this] {
    int waiting = 0;
    return ioctl(input.descriptor(), FIONREAD, &waiting) == 0 && waiting == 0;
  });
}

std::size_t RunningBridge::descriptors() const {
  const std::filesystem::directory_iterator all("/proc/" + std::to_string(pid_) + "/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

std::size_t RunningBridge::residentBytes() const {
  std::ifstream stream("/proc/" + std::to_string(pid_) + "/statm");
  std::size_t total = 0, resident = 0;
  stream >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace tollvane::test
