#include "tests/support/process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

namespace tollvane::test {
namespace {

using std::chrono::steady_clock;

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

std::vector<std::string> assignments(const Variables& variables) {
  std::vector<std::string> result;
  for (const auto& [name, value] : variables) result.push_back(name + "=" + value);
  return result;
}

struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;
};

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  return {ends[0], ends[1]};
}

// The standard streams of the child; if one is absent, the child gets the test's own.
struct Streams {
  int input = -1;
  int output = -1;
  int errors = -1;
};

// Runs in the child, between fork and exec.
[[noreturn]] void become(char** command, char** variables, pid_t parent, const Streams& streams) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(127);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  if (streams.input >= 0) dup2(streams.input, STDIN_FILENO);
  if (streams.output >= 0) dup2(streams.output, STDOUT_FILENO);
  if (streams.errors >= 0) dup2(streams.errors, STDERR_FILENO);
  environ = variables;
  execvp(command[0], command);
  _exit(127);
}

}  // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
  const auto until = steady_clock::now() + deadline;
  while (!condition()) {
    if (steady_clock::now() >= until) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

Variables ownVariables() {
  Variables variables;
  for (char** each = environ; each && *each; ++each) {
    const std::string_view text = *each;
    const std::size_t equals = text.find('=');
    if (equals != std::string_view::npos) variables.emplace(text.substr(0, equals), text.substr(equals + 1));
  }
  return variables;
}

Process::Process(std::vector<std::string> command, const Options& options) {
  const Pipe input = options.input == Input::written ? makePipe() : Pipe();
  const Pipe output = options.output == Output::read ? makePipe() : Pipe();
  // The test must not end by a signal if it writes to a program that has ended.
  if (options.input == Input::written) ::signal(SIGPIPE, SIG_IGN);
  input_ = input.writeEnd;
  output_ = output.readEnd;
  const Streams streams{
      .input = input.readEnd,
      .output = options.output == Output::ignored ? open("/dev/null", O_WRONLY | O_CLOEXEC) : output.writeEnd,
      .errors = options.errors ? open(options.errors->c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1,
  };
  std::vector<std::string> environment = assignments(options.variables ? *options.variables : ownVariables());
  const auto arguments = pointers(command);
  const auto variables = pointers(environment);
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) become(const_cast<char**>(arguments.data()), const_cast<char**>(variables.data()), parent, streams);
  for (const int descriptor : {streams.input, streams.output, streams.errors}) {
    if (descriptor >= 0) close(descriptor);
  }
  if (pid_ < 0) throw std::runtime_error("cannot start " + command.front());
}

Process::~Process() {
  stop();
  closeInput();
  closeOutput();
}

void Process::signal(int number) {
  if (!ended()) ::kill(pid_, number);
}

std::optional<int> Process::exitCode(std::chrono::milliseconds deadline) {
  waitUntil([this] { return ended(); }, deadline);
  return exitCode_;
}

void Process::stop() {
  signal(SIGTERM);
  signal(SIGCONT);
  if (!exitCode(std::chrono::seconds(2))) kill();
}

void Process::kill() {
  signal(SIGKILL);
  exitCode();
}

void Process::writeLine(std::string_view line) {
  const std::string bytes = std::string(line) + '\n';
  std::string_view left = bytes;
  while (!left.empty()) {
    const ssize_t written = write(input_, left.data(), left.size());
    if (written < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category(), "writing to a program");
    left.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
  }
}

void Process::closeInput() {
  if (input_ >= 0) close(std::exchange(input_, -1));
}

std::optional<std::string> Process::line(std::chrono::milliseconds deadline) {
  const auto until = steady_clock::now() + deadline;
  while (unread_.find('\n') == std::string::npos) {
    if (!readMore(until)) return std::nullopt;
  }
  const std::size_t end = unread_.find('\n');
  std::string line = unread_.substr(0, end);
  unread_.erase(0, end + 1);
  return line;
}

std::string Process::rest(std::chrono::milliseconds deadline) {
  const auto until = steady_clock::now() + deadline;
  while (readMore(until)) {
  }
  return std::exchange(unread_, {});
}

const std::string& Process::printed() {
  while (readWithin(std::chrono::milliseconds(0))) {
  }
  return unread_;
}

void Process::closeOutput() {
  if (output_ >= 0) close(std::exchange(output_, -1));
}

bool Process::ended() {
  if (exitCode_) return true;
  int status = 0;
  const pid_t result = waitpid(pid_, &status, WNOHANG);
  if (result == 0) return false;
  exitCode_ = result < 0 ? -1 : WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return true;
}

bool Process::readMore(steady_clock::time_point until) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - steady_clock::now());
  return left.count() >= 0 && readWithin(left);
}

// False if there is nothing to read within `time`, and at the end of the output.
bool Process::readWithin(std::chrono::milliseconds time) {
  if (output_ < 0) return false;
  pollfd query{output_, POLLIN, 0};
  const int ready = poll(&query, 1, static_cast<int>(time.count()));
  if (ready < 0 && errno == EINTR) return true;
  if (ready <= 0) return false;
  std::array<char, 4096> buffer{};
  const ssize_t size = read(output_, buffer.data(), buffer.size());
  if (size <= 0) return false;
  unread_.append(buffer.data(), static_cast<std::size_t>(size));
  return true;
}

std::optional<int> run(const std::vector<std::string>& command, const Variables& variables,
                       std::chrono::milliseconds deadline) {
  Process process(command, {.output = Process::Output::ignored, .variables = variables, .errors = "/dev/null"});
  return process.exitCode(deadline);
}

}  // namespace tollvane::test
