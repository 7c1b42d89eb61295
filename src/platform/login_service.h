// Whether the system starts Tollvane when its user logs in. Main thread only.
#pragma once

#include <optional>
#include <string>

namespace tollvane {

enum class LoginStatus {
  notRegistered = 0,
  enabled = 1,
  requiresApproval = 2,  // registered, but the user turned it off in the system's own settings
  notFound = 3,          // the system does not know this program
};

enum class AskedBy {
  program,
  user,  // has just asked for it; this undoes what the user did in the system's own settings, if the system lets us
};

class LoginService {
 public:
  virtual ~LoginService() = default;

  virtual LoginStatus status() const = 0;

  // Both return the reason of a failure in the system's words; absent on success.
  virtual std::optional<std::string> registerApplication(AskedBy by) = 0;
  virtual std::optional<std::string> unregisterApplication() = 0;
};

}  // namespace tollvane
