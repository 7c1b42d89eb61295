#import <AppKit/AppKit.h>

#include <csignal>

#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"

@interface TVApplicationDelegate : NSObject <NSApplicationDelegate> {
 @public
  tollvane::ApplicationEvents events;
}
@end

@implementation TVApplicationDelegate

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  events.didFinishLaunching();
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender hasVisibleWindows:(BOOL)hasVisibleWindows {
  events.shouldHandleReopen();
  return YES;
}

- (void)applicationWillTerminate:(NSNotification*)notification {
  events.willTerminate();
}

- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)sender {
  return YES;
}

@end

namespace tollvane {
namespace {

class SharedApplication : public Application {
 public:
  void activateIgnoringOtherApps() override {
    if (@available(macOS 14.0, *)) {
      [NSApp activate];
    } else {
      [NSApp activateIgnoringOtherApps:YES];
    }
  }

  void terminate() override {
    onMainQueue([] { [NSApp terminate:nil]; });
  }
};

// Never seen, but without it the keys for close, copy and quit do nothing in our windows.
NSMenu* mainMenu() {
  NSMenu* keys = [[NSMenu alloc] initWithTitle:@""];
  [keys addItemWithTitle:@"Quit Tollvane" action:@selector(terminate:) keyEquivalent:@"q"];
  [keys addItemWithTitle:@"Close" action:@selector(performClose:) keyEquivalent:@"w"];
  [keys addItemWithTitle:@"Copy" action:@selector(copy:) keyEquivalent:@"c"];
  [keys addItemWithTitle:@"Select All" action:@selector(selectAll:) keyEquivalent:@"a"];
  NSMenu* menu = [[NSMenu alloc] initWithTitle:@""];
  [menu addItemWithTitle:@"" action:nil keyEquivalent:@""].submenu = keys;
  return menu;
}

// Handles a signal. One that is ignored would be ignored by the programs that we start, too.
void doNothing(int) {}

// A signal would end the process at once, and leave the log tool running.
dispatch_source_t terminateAt(int number) {
  std::signal(number, doNothing);
  dispatch_source_t source =
      dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<uintptr_t>(number), 0, dispatch_get_main_queue());
  dispatch_source_set_event_handler(source, ^{
    [NSApp terminate:nil];
  });
  dispatch_activate(source);
  return source;
}

}  // namespace

std::unique_ptr<Application> makeApplication() { return std::make_unique<SharedApplication>(); }

void runApplication(const ApplicationEvents& events) {
  // Writing to a browser that has gone must fail, not end the process. Nothing else would do: a socket whose other end
  // has closed already cannot be told so.
  std::signal(SIGPIPE, doNothing);
  NSApplication* application = NSApplication.sharedApplication;
  // What would end with the last use of its name must live as long as the application: the delegate, which the
  // application holds weakly, the activity and the sources.
  static TVApplicationDelegate* const delegate = [[TVApplicationDelegate alloc] init];
  delegate->events = events;
  application.delegate = delegate;
  [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
  application.mainMenu = mainMenu();
  // The system slows applications down that show no window. This one must hear sounds at once; it lets the computer
  // sleep all the same.
  [[maybe_unused]] static const id<NSObject> activity =
      [NSProcessInfo.processInfo beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                                                   reason:@"Listens for sounds"];
  [[maybe_unused]] static NSArray<dispatch_source_t>* const signals =
      @[ terminateAt(SIGTERM), terminateAt(SIGINT), terminateAt(SIGHUP) ];
  [application run];
}

}  // namespace tollvane
