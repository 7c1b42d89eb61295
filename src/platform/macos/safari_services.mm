#import <SafariServices/SafariServices.h>

#include <utility>

#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"

namespace tollvane {
namespace {

// Only property lists can be sent: a message that contains null is none. Nil if the text is no such object.
NSDictionary<NSString*, id>* userInfoFrom(std::string_view json) {
  NSData* bytes = [NSData dataWithBytes:json.data() length:json.size()];
  NSObject* object = [NSJSONSerialization JSONObjectWithData:bytes options:0 error:nil];
  if (![object isKindOfClass:[NSDictionary class]]) return nil;
  if (![NSPropertyListSerialization propertyList:object isValidForFormat:NSPropertyListBinaryFormat_v1_0]) return nil;
  return (NSDictionary<NSString*, id>*)object;
}

class SafariApplication : public SafariServices {
 public:
  void dispatchMessage(std::string_view name, std::string_view extensionID, std::string_view userInfo) override {
    NSDictionary<NSString*, id>* message = userInfoFrom(userInfo);
    if (message == nil) return;
    [SFSafariApplication dispatchMessageWithName:nsString(name)
                       toExtensionWithIdentifier:nsString(extensionID)
                                        userInfo:message
                               completionHandler:nil];
  }

  void getState(std::string_view extensionID, std::function<void(std::optional<bool>)> completion) override {
    [SFSafariExtensionManager
        getStateOfSafariExtensionWithIdentifier:nsString(extensionID)
                              completionHandler:^(SFSafariExtensionState* state, NSError*) {
                                completion(state == nil ? std::nullopt : std::optional<bool>(state.enabled));
                              }];
  }

  void showPreferences(std::string_view extensionID) override {
    [SFSafariApplication showPreferencesForExtensionWithIdentifier:nsString(extensionID) completionHandler:nil];
  }
};

}  // namespace

std::unique_ptr<SafariServices> makeSafariServices() { return std::make_unique<SafariApplication>(); }

}  // namespace tollvane
