// Runs the event loop of an application without Dock icon and without a visible menu bar. Main thread only.
#pragma once

#include <functional>

namespace tollvane {

struct ApplicationEvents {
  std::function<void()> didFinishLaunching;
  std::function<void()> shouldHandleReopen;  // the user has opened the application while it runs
  std::function<void()> willTerminate;       // also if the process is asked to end by a signal
};

// Does not return: the process ends with the event loop.
void runApplication(const ApplicationEvents& events);

}  // namespace tollvane
