// A program that a test starts. Lines can be written to its standard input and read from its standard output;
// destroying it ends it and waits for it. It dies by itself should the test be killed. One thread, the one that stays:
// the kernel ties the program to it.
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

// Looks at the condition again and again; false when it still does not hold after the deadline.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline = patience);

// Of the whole environment of a program.
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

  // `command`: the program (looked for in PATH) and its arguments. Throws when it cannot be started.
  explicit Process(std::vector<std::string> command) : Process(std::move(command), Options()) {}
  Process(std::vector<std::string> command, const Options& options);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }
  bool running() { return !ended(); }

  void signal(int number);

  // Its exit code, or 128 plus the signal that ended it. Absent when it still runs after the deadline.
  std::optional<int> exitCode(std::chrono::milliseconds deadline = patience);

  // Asks it to end, insists after two seconds, and waits until it is gone.
  void stop();
  void kill();

  // Sends one line to its standard input. Throws when nobody reads there any more.
  void writeLine(std::string_view line);
  void closeInput();

  // The next line that it prints, without the line feed. Absent after the deadline, and at the end of its output.
  std::optional<std::string> line(std::chrono::milliseconds deadline = patience);

  // Everything it prints until it closes its output, or until the deadline.
  std::string rest(std::chrono::milliseconds deadline = patience);

  // What it has printed so far and line() has not taken. Does not wait.
  const std::string& printed();

  // Where its output arrives, to wait for it along with other things.
  int output() const { return output_; }

  // From now on nobody reads its output.
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

// Runs a program to its end. Its exit code; absent when it had to be killed after the deadline.
std::optional<int> run(const std::vector<std::string>& command, const Variables& variables,
                       std::chrono::milliseconds deadline = patience);

}  // namespace tollvane::test
