// A program that a test starts. Lines can be written to its standard input and read from its standard output. The
// destructor ends the program and waits for it. If the test is killed, the kernel kills the program too. Use it from
// one thread, which must outlive it, because the kernel ties the program to the thread that started it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tollvane::test {

inline constexpr std::chrono::milliseconds patience{10000};

// Checks the condition again and again; false if it still does not hold after the deadline.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline = patience);

// The whole environment of a program.
using Variables = std::map<std::string, std::string>;
Variables ownVariables();

class Process {
 public:
  enum class Input { inherited, written };
  enum class Output { ignored, read };

  struct Options {
    Input input = Input::inherited;
    Output output = Output::ignored;
    std::optional<Variables> variables;           // absent: the test's own
    std::optional<std::filesystem::path> errors;  // a file for standard error; absent: the test's own
  };

  // `command`: the program (looked for in PATH) and its arguments. Throws if it cannot be started.
  explicit Process(std::vector<std::string> command) : Process(std::move(command), Options()) {}
  Process(std::vector<std::string> command, const Options& options);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }
  bool running() { return !ended(); }

  void signal(int number);

  // The exit code of the program, or 128 plus the signal that ended it. Absent if it still runs after the deadline.
  std::optional<int> exitCode(std::chrono::milliseconds deadline = patience);

  // Asks the program to end, kills it after two seconds, and waits until it is gone.
  void stop();
  void kill();

  // Sends one line to the program's standard input. Throws if the program has closed it.
  void writeLine(std::string_view line);
  void closeInput();

  // The next line that the program prints, without the line feed. Absent after the deadline, and at the end of its
  // output.
  std::optional<std::string> line(std::chrono::milliseconds deadline = patience);

  // Everything that the program prints until it closes its output, or until the deadline.
  std::string rest(std::chrono::milliseconds deadline = patience);

  // What the program has printed so far and line() has not returned yet. Does not wait.
  const std::string& printed();

  // The descriptor on which its output arrives, for waiting on several descriptors.
  int output() const { return output_; }

  // Closes the reading end of its output.
  void closeOutput();

 private:
  bool ended();
  bool readMore(std::chrono::steady_clock::time_point until);
  bool readWithin(std::chrono::milliseconds time);

  pid_t pid_ = -1;
  int input_ = -1;
  int output_ = -1;
  std::string unread_;
  std::optional<int> exitCode_;
};

// Runs a program to its end and returns its exit code; absent if it had to be killed after the deadline.
std::optional<int> run(const std::vector<std::string>& command, const Variables& variables,
                       std::chrono::milliseconds deadline = patience);

}  // namespace tollvane::test
