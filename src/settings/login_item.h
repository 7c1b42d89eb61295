// Starting Tollvane when its user logs in, and the end of an older way to the same. Main thread only.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "platform/files.h"
#include "platform/locations.h"
#include "platform/login_service.h"

namespace tollvane {

class LoginItem {
 public:
  LoginItem(LoginService& service, Files& files, const Locations& locations)
      : service_(service), files_(files), locations_(locations) {}

  // The launch agent that earlier versions installed; absent for a user without a home.
  std::optional<std::filesystem::path> legacyAgent() const;

  LoginStatus status() const { return service_.status(); }
  bool isEnabled() const { return status() == LoginStatus::enabled; }

  // The reason, in the system's words, when it was refused; absent on success.
  std::optional<std::string> set(bool on, AskedBy by = AskedBy::program) {
    return on ? service_.registerApplication(by) : service_.unregisterApplication();
  }

  // Puts the login item in the place of the legacy agent. Fails in silence, and then leaves the agent.
  void migrateFromLegacyAgent();

 private:
  LoginService& service_;
  Files& files_;
  const Locations& locations_;
};

}  // namespace tollvane
