// Starting programs and reading what they print.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tollvane {

// A program that was started. Main thread only. Destroying the handle ends the program, if it still runs, without a
// word to the handlers.
class ChildProcess {
 public:
  virtual ~ChildProcess() = default;

  // From now on nobody is told when the program ends.
  virtual void removeTerminationHandler() = 0;

  // Asks the program to end. Does nothing when it has ended already.
  virtual void terminate() = 0;
};

class ChildProcesses {
 public:
  struct Launch {
    std::filesystem::path executable;
    std::vector<std::string> arguments;  // passed one by one, never through a shell

    // Called on the main thread with each piece that the program writes to its standard output, in order. The bytes
    // are valid during the call only.
    std::function<void(std::string_view bytes)> onOutput;

    // Called on the main thread once, when the program has ended for any reason. Never called for a program that
    // could not be started.
    std::function<void()> onTermination;
  };

  virtual ~ChildProcesses() = default;

  // Starts a program: standard input inherited, standard output to `onOutput`, standard error to nowhere.
  // Null when it cannot be started. Main thread only.
  virtual std::unique_ptr<ChildProcess> launch(Launch launch) = 0;
};

}  // namespace tollvane
