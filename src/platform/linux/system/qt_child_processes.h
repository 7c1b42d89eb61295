// Child processes through QProcess. Make it on the main thread, after the application object.
#pragma once

#include "platform/child_processes.h"

namespace tollvane {

class QtChildProcesses : public ChildProcesses {
 public:
  // Waits until the program has been started or has failed to start, which takes as long as an exec.
  std::unique_ptr<ChildProcess> launch(Launch launch) override;
};

}  // namespace tollvane
