// What Safari starts for each message of the extension. It runs in a sandbox, in which only the inbox can be written.
// https://developer.apple.com/documentation/safariservices/messaging-between-the-app-and-javascript-in-a-safari-web-extension
#import <Foundation/Foundation.h>
#import <SafariServices/SafariServices.h>
#include <pwd.h>
#include <unistd.h>

#include <chrono>

#include "extension/safari/inbox_writer.h"
#include "platform/posix/posix_files.h"

namespace {

// The user's own, which in a sandbox is not what the system calls home.
std::filesystem::path inbox() {
  const passwd* user = ::getpwuid(::getuid());
  if (user == nullptr) return {};
  return std::filesystem::path(user->pw_dir) / "Library/Application Support/Tollvane/safari-inbox";
}

std::int64_t microseconds() {
  using namespace std::chrono;
  return duration_cast<std::chrono::microseconds>(system_clock::now().time_since_epoch()).count();
}

void leave(NSDictionary<NSString*, id>* message) {
  if (message == nil || ![NSJSONSerialization isValidJSONObject:message]) return;
  NSData* json = [NSJSONSerialization dataWithJSONObject:message options:0 error:nil];
  if (json == nil || inbox().empty()) return;
  static tollvane::PosixFiles files;
  static tollvane::InboxWriter writer(files, inbox(), ::getpid());
  writer.write({static_cast<const char*>(json.bytes), json.length}, microseconds());
}

}  // namespace

@interface TVSafariHandler : NSObject <NSExtensionRequestHandling>
@end

@implementation TVSafariHandler

// Safari calls it on threads of its own, perhaps on several at the same time.
- (void)beginRequestWithExtensionContext:(NSExtensionContext*)context {
  NSExtensionItem* item = context.inputItems.firstObject;
  NSObject* message = item.userInfo[SFExtensionMessageKey];
  dispatch_async(dispatch_get_main_queue(), ^{
    if ([message isKindOfClass:[NSDictionary class]]) leave((NSDictionary<NSString*, id>*)message);
    [context completeRequestReturningItems:@[] completionHandler:nil];
  });
}

@end
