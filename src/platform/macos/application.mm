#include "platform/macos/application.h"

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

NSMenu* submenu(NSMenu* menu) {
  NSMenuItem* item = [[NSMenuItem alloc] initWithTitle:@"" action:nil keyEquivalent:@""];
  item.submenu = [[NSMenu alloc] initWithTitle:@""];
  [menu addItem:item];
  return item.submenu;
}

// Never seen, but without it the keys for close, copy and quit do nothing in our windows.
NSMenu* mainMenu() {
  NSMenu* menu = [[NSMenu alloc] initWithTitle:@""];
  [submenu(menu) addItemWithTitle:@"Quit Tollvane" action:@selector(terminate:) keyEquivalent:@"q"];
  [submenu(menu) addItemWithTitle:@"Close" action:@selector(performClose:) keyEquivalent:@"w"];
  NSMenu* edit = submenu(menu);
  [edit addItemWithTitle:@"Copy" action:@selector(copy:) keyEquivalent:@"c"];
  [edit addItemWithTitle:@"Select All" action:@selector(selectAll:) keyEquivalent:@"a"];
  return menu;
}

// A signal would end the process at once, and leave the log tool running. It gets a handler that does nothing, because
// programs that we start would inherit that a signal is ignored.
dispatch_source_t terminateAt(int number) {
  std::signal(number, [](int) {});
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

// Until the end of its scope, although nothing uses it any more.
#define KEPT __attribute__((objc_precise_lifetime, unused))

void runApplication(const ApplicationEvents& events) {
  NSApplication* application = NSApplication.sharedApplication;
  // The application holds it weakly.
  KEPT TVApplicationDelegate* delegate = [[TVApplicationDelegate alloc] init];
  delegate->events = events;
  application.delegate = delegate;
  [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
  application.mainMenu = mainMenu();
  // The system slows applications down that show no window. This one must hear sounds at once; it lets the computer
  // sleep all the same.
  KEPT id<NSObject> activity =
      [NSProcessInfo.processInfo beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                                                   reason:@"Listens for sounds"];
  KEPT NSArray<dispatch_source_t>* signals = @[ terminateAt(SIGTERM), terminateAt(SIGINT), terminateAt(SIGHUP) ];
  [application run];
}

}  // namespace tollvane
