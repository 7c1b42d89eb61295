#import <ServiceManagement/ServiceManagement.h>

#include "platform/macos/decisions/decisions.h"
#include "platform/macos/macos_wording.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"

namespace tollvane {
namespace {

class MainAppService : public LoginService {
 public:
  LoginStatus status() const override { return loginStatus(service().status); }

  std::optional<std::string> registerApplication(AskedBy by) override {
    if (isTranslocated(utf8(NSBundle.mainBundle.bundlePath))) return std::string(moveToApplications);
    NSError* error = nil;
    if (status() != LoginStatus::enabled && ![service() registerAndReturnError:&error]) return reason(error);
    if (showsSystemSettings(status(), by)) [SMAppService openSystemSettingsLoginItems];
    return std::nullopt;
  }

  std::optional<std::string> unregisterApplication() override {
    NSError* error = nil;
    if (isRegistered(status()) && ![service() unregisterAndReturnError:&error]) return reason(error);
    return std::nullopt;
  }

 private:
  static SMAppService* service() { return SMAppService.mainAppService; }
  static std::string reason(NSError* error) { return utf8(error.localizedDescription); }
};

}  // namespace

std::unique_ptr<LoginService> makeLoginService() { return std::make_unique<MainAppService>(); }

}  // namespace tollvane
