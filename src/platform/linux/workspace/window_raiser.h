// Bringing another application's window in front of all others. The desktops have no common way to do it, so there are
// several, and the first that leads there is taken.
//
//   Activator activator({&sway, &x11, &busActivation}, queue);
//   activator.raise({.pid = 4711, .entry = entry}, [](Raised raised) { ... });
//
// Main thread only.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/apps/desktop_entries.h"
#include "platform/main_queue.h"
#include "platform/process_table.h"
#include "support/liveness.h"

namespace tollvane {

// An application whose window is to come forward, and how its windows are recognised.
struct ActivationTarget {
  Pid pid = 0;                            // the process that was asked for
  std::vector<Pid> starters = {};         // the application's processes that started this one
  std::vector<Pid> others = {};           // the application's other processes
  std::vector<Pid> hosts = {};            // what it runs inside of: the terminal emulator of a program without windows
  DesktopEntries::Entry entry = nullptr;  // null: it has none
  std::string title = {};                 // a part of the wanted window's title; empty: any window
  bool isTitleNeeded = false;             // a window with another title does not fit at all

  // Whether a window with this title is the wanted one.
  bool isWanted(std::string_view windowTitle) const {
    return !title.empty() && windowTitle.find(title) != windowTitle.npos;
  }

  // How well a window fits, as far as its process tells: the smaller the better; absent if it is another application's.
  std::optional<int> rankOfPid(Pid windowPid) const;

  // The same by the name that a window gives itself: a half of its WM_CLASS, or its app_id.
  std::optional<int> rankOfName(std::string_view windowName) const;

  // The best of all that its process and its names tell.
  std::optional<int> rank(Pid windowPid, const std::vector<std::string>& windowNames) const;

  // How well one of the application's windows fits: the smaller the better. The wanted title counts most, because only
  // the title tells the windows of two profiles of a browser apart.
  using Fit = std::pair<bool, int>;  // whether it has another title; its rank
  std::optional<Fit> fit(int windowRank, std::string_view windowTitle) const {
    const bool hasAnother = !isWanted(windowTitle);
    if (hasAnother && isTitleNeeded) return std::nullopt;
    return Fit{hasAnother, windowRank};
  }
};

// A window as a compositor describes it.
struct OpenWindow {
  std::string id;                       // the compositor's own
  Pid pid = 0;                          // 0: unknown
  std::vector<std::string> names = {};  // what it calls itself
  std::string title = {};
  bool isActive = false;  // it is in front
  double height = 0;      // the greater, the higher among the others
};

// The window that fits best; of several that fit equally well the active one, else the highest. Absent if no window
// belongs to the application.
std::optional<OpenWindow> bestWindowOf(const std::vector<OpenWindow>& windows, const ActivationTarget& target);

enum class Raised {
  yes,       // a window of the application came forward, or asks for attention where the desktop does not let it
  noWindow,  // this way sees every window there is, and none belongs to the application
  unknown,   // this way leads nowhere on this desktop
};

class WindowRaiser {
 public:
  virtual ~WindowRaiser() = default;

  // `done` is called once, perhaps before this returns; never after the raiser is destroyed. Requests may overlap; each
  // is answered.
  virtual void raise(const ActivationTarget& target, std::function<void(Raised)> done) = 0;
};

// Tries several ways, in their order. They and the queue outlive it. A browser's window gets the title of a tab a
// moment after the tab has come forward; so if a title is wanted, the window that has it by then is raised, too.
class Activator : public WindowRaiser {
 public:
  Activator(std::vector<WindowRaiser*> raisers, MainQueue& queue) : raisers_(std::move(raisers)), queue_(queue) {}

  void raise(const ActivationTarget& target, std::function<void(Raised)> done) override;

 private:
  void tryFrom(std::size_t index, const ActivationTarget& target, Raised soFar, std::function<void(Raised)> done);
  void lookForTitle(ActivationTarget target, int request, int times);

  std::vector<WindowRaiser*> raisers_;
  MainQueue& queue_;
  int requests_ = 0;  // a later request ends the search for the title of an earlier one
  Liveness alive_;
};

}  // namespace tollvane
