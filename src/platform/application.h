// The running program as the desktop sees it, and how it speaks to the user in a few words that need an answer.
// Main thread only.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

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

struct Alert {
  std::string messageText;      // the bold first line
  std::string informativeText;  // what follows it
  std::vector<std::string> buttons = {"OK"};

  bool operator==(const Alert&) const = default;
};

class Alerts {
 public:
  virtual ~Alerts() = default;

  // Shows the alert in the middle of the screen, in front, as plain text. One at a time: further ones wait. The event
  // loop goes on meanwhile. `answer` is called once, with the index of the button that was chosen; closing the alert
  // otherwise counts as its last button. Not called when the process ends first.
  virtual void show(const Alert& alert, std::function<void(std::size_t button)> answer) = 0;
};

}  // namespace tollvane
