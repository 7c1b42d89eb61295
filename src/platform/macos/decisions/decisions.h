// What the roles decide: alerts, activation, start at login, and the refusal of the log tool. Pure, except for
// LogRefusal; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>
#include <utility>

#include "platform/login_service.h"

namespace tollvane {

// The index of the button for the answer of NSAlert: the first button answers `first`, each other one more than the
// button before it. Whatever else ends the alert counts as its last button.
constexpr std::size_t chosenButton(long answer, long first, std::size_t count) {
  const bool isButton = answer >= first && answer - first < static_cast<long>(count);
  if (isButton) return static_cast<std::size_t>(answer - first);
  return count == 0 ? 0 : count - 1;
}

// The system gives Return to the first button, and Escape only to one that is called "Cancel". A button has one key,
// so the only button of an alert keeps Return.
constexpr bool takesEscape(std::size_t index, std::size_t count) { return count > 1 && index + 1 == count; }

// How an application is brought forward.
enum class ActivationStep {
  ask,   // it may come forward, or be refused
  open,  // the way of a double click in the Finder; an application without windows shows one
  none,
};

// The next step for an application, which has a bundle if it can be opened.
constexpr ActivationStep nextStep(bool isActive, bool hasBundle, bool wasAsked) {
  if (isActive) return ActivationStep::none;
  if (!wasAsked) return ActivationStep::ask;
  return hasBundle ? ActivationStep::open : ActivationStep::none;
}

// Whether the process that runs with this number is the one that is meant, and not a later one. 0: unknown.
constexpr bool isSameProcess(std::uint64_t meantStart, std::uint64_t runningStart) {
  return meantStart == 0 || meantStart == runningStart;
}

// The status that SMAppService gives as a number. A number of a later system counts as not registered, so that the user
// can try.
constexpr LoginStatus loginStatus(long status) {
  constexpr std::array known = {LoginStatus::notRegistered, LoginStatus::enabled, LoginStatus::requiresApproval,
                                LoginStatus::notFound};
  const bool isKnown = status >= 0 && status < static_cast<long>(known.size());
  return isKnown ? known[static_cast<std::size_t>(status)] : LoginStatus::notRegistered;
}

// Some systems say "not found" of an application that was never registered. Only registering shows whether they know
// it, so neither status keeps us from trying.
constexpr bool isRegistered(LoginStatus status) {
  return status == LoginStatus::enabled || status == LoginStatus::requiresApproval;
}

// If the user has turned the application off in System Settings, registering succeeds and changes nothing. Only the
// user can turn it on again, so the caller opens that page of System Settings if the user has just asked for it.
constexpr bool showsSystemSettings(LoginStatus afterwards, AskedBy by) {
  return afterwards == LoginStatus::requiresApproval && by == AskedBy::user;
}

// An application that was downloaded and not moved runs from a random place, read-only and different at each start,
// until the user moves it. Whatever is registered for that place is lost.
constexpr bool isTranslocated(std::string_view application) {
  return application.find("/AppTranslocation/") != std::string_view::npos;
}

// macOS lets only administrators read the system log: for other accounts the log tool ends at once, with a status of
// its own. It would do so again each time, so it is not started a second time. Main thread only.
class LogRefusal {
 public:
  static constexpr int noPermission = 77;  // EX_NOPERM of sysexits(3): "Must be admin to run 'stream' command"

  LogRefusal(std::filesystem::path logTool, std::function<void()> tellUser)
      : logTool_(std::move(logTool)), tellUser_(std::move(tellUser)) {}

  bool mayStart(const std::filesystem::path& program) const { return !refused_ || program != logTool_; }

  // To be told of each program that has ended by itself.
  void ended(const std::filesystem::path& program, int status) {
    const bool isRefusal = program == logTool_ && status == noPermission;
    if (isRefusal && !std::exchange(refused_, true) && tellUser_) tellUser_();
  }

 private:
  std::filesystem::path logTool_;
  std::function<void()> tellUser_;
  bool refused_ = false;
};

}  // namespace tollvane
