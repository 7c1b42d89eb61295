// The running program as the desktop sees it, and the alerts with which it asks the user something. Main thread only.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tollvane {

class Application {
 public:
  virtual ~Application() = default;

  // Brings the program's windows in front of all others, also those that are shown right after this call. To be called
  // only if the user has just asked for them.
  virtual void activateIgnoringOtherApps() = 0;

  // Ends the event loop after the current work. AppDelegate::applicationWillTerminate() is called before the process
  // ends.
  virtual void terminate() = 0;
};

struct Alert {
  std::string messageText;      // the bold first line
  std::string informativeText;  // the text under it
  std::vector<std::string> buttons = {"OK"};

  bool operator==(const Alert&) const = default;
};

class Alerts {
 public:
  virtual ~Alerts() = default;

  // Shows the alert as plain text in the middle of the screen, in front of all windows. Only one is shown at a time;
  // others wait. The event loop runs meanwhile. `answer` is called once, with the index of the chosen button; if the
  // user closes the alert otherwise, that is the last button. It is not called if the process ends first.
  virtual void show(const Alert& alert, std::function<void(std::size_t button)> answer) = 0;
};

}  // namespace tollvane
