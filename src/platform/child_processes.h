// Starts programs and reads what they print.
//
//   auto log = children.launch({
//       .executable = "/usr/bin/log",
//       .arguments = {"stream", "--style", "ndjson"},
//       .onOutput = [&](std::string_view bytes) { lines.append(bytes); },
//       .onTermination = [&] { startAgainLater(); },
//   });
//   if (log) log->terminate();  // onTermination is called when the program has ended
//   log.reset();                // ends the program if it still runs, and calls no handler
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tollvane {

// A program that was started. Main thread only. Destroying the handle ends the program if it still runs, and calls none
// of the handlers.
class ChildProcess {
 public:
  virtual ~ChildProcess() = default;

  // From now on `onTermination` is not called any more.
  virtual void removeTerminationHandler() = 0;

  // Asks the program to end. Does nothing if it has ended already.
  virtual void terminate() = 0;
};

class ChildProcesses {
 public:
  struct Launch {
    std::filesystem::path executable;
    std::vector<std::string> arguments;  // passed one by one, never through a shell

    // Called on the main thread with each piece that the program writes to its standard output, in order. `bytes` is
    // valid during the call only.
    std::function<void(std::string_view bytes)> onOutput;

    // Called on the main thread once, after the program has ended for any reason. Not called if it could not be
    // started.
    std::function<void()> onTermination;
  };

  virtual ~ChildProcesses() = default;

  // Starts a program. Its standard input is inherited, its standard output goes to `onOutput`, its standard error is
  // thrown away. Null if it cannot be started. Main thread only.
  virtual std::unique_ptr<ChildProcess> launch(Launch launch) = 0;
};

}  // namespace tollvane
