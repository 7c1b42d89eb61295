// Starts Tollvane at login through an entry in the desktop's autostart directory. The entry must be for the program
// that runs now: an entry that a Tollvane at another place has made counts as not registered. Main thread only.
// Source: freedesktop.org, Desktop Application Autostart Specification.
#pragma once

#include <filesystem>
#include <optional>

#include "platform/login_service.h"
#include "platform/posix/posix_files.h"

namespace tollvane {

// The autostart entry sets this to "1" (Exec=env TOLLVANE_STARTED_AT_LOGIN=1 …), because Tollvane has no command line.
// It means that the desktop session has started the program, and not a person who wants to see something happen.
inline constexpr const char* startedAtLogin = "TOLLVANE_STARTED_AT_LOGIN";

class AutostartLogin : public LoginService {
 public:
  // `configuration`: the user's configuration folder, absent if the user has no home. `program`: the program to start.
  AutostartLogin(PosixFiles& files, std::optional<std::filesystem::path> configuration, std::filesystem::path program);

  // An entry that is hidden, or that a desktop has marked as turned off, requires the user's approval.
  LoginStatus status() const override;

  std::optional<std::string> registerApplication(AskedBy by) override;
  std::optional<std::string> unregisterApplication() override;

  // Writes the entry anew if it is one of ours whose program is gone, because the bundle was moved or replaced. To be
  // called at the start. Fails in silence.
  void repair();

 private:
  std::optional<std::string> write();

  PosixFiles& files_;
  std::optional<std::filesystem::path> entry_;
  std::filesystem::path program_;
};

}  // namespace tollvane
