// The running program as the desktop sees it. Main thread only.
#pragma once

namespace tollvane {

class Application {
 public:
  virtual ~Application() = default;

  // Brings the program's windows in front of all others, also those that are shown right after this: the user has just
  // asked for them.
  virtual void activateIgnoringOtherApps() = 0;

  // Ends the event loop once the current work is done; the AppDelegate hears of it before the process ends.
  virtual void terminate() = 0;
};

}  // namespace tollvane
