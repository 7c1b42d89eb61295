// Starting at login through an entry in the desktop's autostart directory. The entry of the program that runs now: one
// that a Tollvane at another place has made counts as not registered. Main thread only.
// Source: freedesktop.org, Desktop Application Autostart Specification.
#pragma once

#include <filesystem>
#include <optional>

#include "platform/files.h"
#include "platform/login_service.h"

namespace tollvane {

// Set to "1" by the autostart entry (Exec=env TOLLVANE_STARTED_AT_LOGIN=1 …), because Tollvane has no command line: the
// desktop session has started the program, and not a person, who wants to see something happen.
inline constexpr const char* startedAtLogin = "TOLLVANE_STARTED_AT_LOGIN";

class AutostartLogin : public LoginService {
 public:
  // `configuration`: where the user's settings are, absent for a user without a home; `program`: what is to be started.
  AutostartLogin(Files& files, std::optional<std::filesystem::path> configuration, std::filesystem::path program);

  // An entry that is hidden, or that a desktop has marked as turned off, requires the user's approval.
  LoginStatus status() const override;

  std::optional<std::string> registerApplication() override;
  std::optional<std::string> unregisterApplication() override;

 private:
  Files& files_;
  std::optional<std::filesystem::path> entry_;
  std::filesystem::path program_;
};

}  // namespace tollvane
