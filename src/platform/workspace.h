// The applications of the user's desktop: which ones run, which are installed, and what their names are. Main thread
// only; every answer is about this moment.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/process_table.h"

namespace tollvane {

enum class ActivationPolicy {
  regular,    // an ordinary application: the user sees it among the running applications
  accessory,  // has a name, but is not among them (a panel, a command-line program)
};

struct RunningApplication {
  Pid pid = 0;
  std::optional<std::string> localizedName;  // the name that the user's desktop shows
  ActivationPolicy activationPolicy = ActivationPolicy::accessory;
  std::uint64_t startTime = 0;  // with `pid` it names one process for ever; comparable only with itself; 0: unknown

  bool operator==(const RunningApplication&) const = default;
};

class Workspace {
 public:
  virtual ~Workspace() = default;

  // The application that runs as this process itself; absent if the process is gone or belongs to none.
  virtual std::optional<RunningApplication> runningApplication(Pid pid) const = 0;

  // The same, but absent for an accessory. A system that finds out sooner than the accessory's name does better than
  // this.
  virtual std::optional<RunningApplication> regularApplication(Pid pid) const {
    auto application = runningApplication(pid);
    const bool isRegular = application && application->activationPolicy == ActivationPolicy::regular;
    return isRegular ? std::move(application) : std::nullopt;
  }

  // All running processes of the application with this bundle identifier, the oldest first.
  virtual std::vector<RunningApplication> runningApplications(std::string_view bundleID) const = 0;

  // All ordinary applications that run in this user's desktop session, with each of their processes, in the system's
  // own order. Another session of the same user has windows that cannot come forward here.
  virtual std::vector<RunningApplication> regularApplications() const = 0;

  // The names under which the desktop shows the application with this bundle identifier, whether it runs or not;
  // several if it is installed in several ways. Far cheaper than to look for its processes.
  virtual std::vector<std::string> names(std::string_view bundleID) const = 0;

  // Where the application with this bundle identifier is installed: its bundle, or the file that describes it to the
  // desktop. Absent if it is not installed.
  virtual std::optional<std::filesystem::path> urlForApplication(std::string_view bundleID) const = 0;

  // The same for the name that the desktop shows; the name must be exact, and case matters. Absent on a system whose
  // applications are in Locations::applicationFolders().
  virtual std::optional<std::filesystem::path> urlForApplicationNamed(
      [[maybe_unused]] std::string_view displayName) const {
    return std::nullopt;
  }

  // The icon of the application with this bundle identifier: what the platform's windows need to draw it, a name or a
  // path. Empty if the application is not installed, or has none.
  virtual std::string icon(std::string_view bundleID) const = 0;

  // The name that the desktop shows for this path; the path's last component if the desktop knows no other.
  virtual std::string displayName(const std::filesystem::path& path) const = 0;

  // Brings an application, which may have ended meanwhile, in front of all others. `title`: a part of the wanted
  // window's title; if it is empty or no window has it, any window of the application will do, and one that is in front
  // already stays there. `done` is called once, on the main thread, perhaps before this returns: with false only if it
  // is certain that no window came forward.
  virtual void activate(const RunningApplication& application, std::string_view title,
                        std::function<void(bool)> done) = 0;

  // Opens a file in the user's default program for it, or starts the application at this path. `done` is called at most
  // once, on the main thread, perhaps before this returns: with false if nothing could be started.
  virtual void open(const std::filesystem::path& path, std::function<void(bool)> done) = 0;

  // Opens a page in the user's default browser. Only http and https; everything else is silently refused.
  virtual void openURL(std::string_view url) = 0;

  // The same in the application at the path `application`, which comes forward. `done` is called once, on the main
  // thread: with false if the application could not be started.
  virtual void openURL(std::string_view url, const std::filesystem::path& application,
                       std::function<void(bool)> done) = 0;
};

}  // namespace tollvane
