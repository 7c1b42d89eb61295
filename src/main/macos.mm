// Where Tollvane starts on macOS. A second start is no second process: the system tells the first one of it.

#include "app/app_delegate.h"
#include "platform/macos/macos_platform.h"

int main() {
  using namespace tollvane;
  @autoreleasepool {
    MacPlatform platform;
    AppDelegate delegate(platform.roles());
    runApplication({
        .didFinishLaunching = [&] { delegate.applicationDidFinishLaunching(); },
        .shouldHandleReopen = [&] { delegate.applicationShouldHandleReopen(false); },
        .willTerminate = [&] { delegate.applicationWillTerminate(); },
    });
  }
}
