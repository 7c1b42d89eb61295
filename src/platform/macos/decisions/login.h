// Start at login, as macOS tells of it. Pure; any thread.
#pragma once

#include <filesystem>

#include "platform/login_service.h"

namespace tollvane {

// The status that SMAppService gives as a number. A number of a later system counts as not registered, so that the user
// can try.
constexpr LoginStatus loginStatus(long status) {
  switch (status) {
    case 1:
      return LoginStatus::enabled;
    case 2:
      return LoginStatus::requiresApproval;
    case 3:
      return LoginStatus::notFound;
    default:
      return LoginStatus::notRegistered;
  }
}

// Some systems say "not found" of an application that was never registered. Only registering shows whether they know
// it, so neither status keeps us from trying.
constexpr bool isRegistered(LoginStatus status) {
  return status == LoginStatus::enabled || status == LoginStatus::requiresApproval;
}

// If the user has turned the application off in System Settings, registering succeeds and changes nothing. Only the
// user can turn it on again, so a user who has just asked for it is taken to the place.
constexpr bool showsSystemSettings(LoginStatus afterwards, AskedBy by) {
  return afterwards == LoginStatus::requiresApproval && by == AskedBy::user;
}

// An application that was downloaded and not moved runs from a random place, read-only and different at each start,
// until the user moves it. Whatever is registered for that place is lost.
inline bool isTranslocated(const std::filesystem::path& program) {
  return program.native().find("/AppTranslocation/") != std::string::npos;
}

}  // namespace tollvane
