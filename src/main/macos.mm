// Where Tollvane starts on macOS. A second start is no second process: the system tells the first one of it.

#include <csignal>

#include "app/app_delegate.h"
#include "platform/macos/application.h"
#include "platform/macos/macos_platform.h"

int main() {
  using namespace tollvane;
  // Writing to a browser that has gone must fail, not end the process. Nothing else would do: a socket whose other end
  // has closed already cannot be told so. It is a handler, because programs that we start would inherit that the signal
  // is ignored.
  std::signal(SIGPIPE, [](int) {});
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
