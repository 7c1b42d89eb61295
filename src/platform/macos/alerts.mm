#import <AppKit/AppKit.h>
#import <CoreFoundation/CoreFoundation.h>

#include "platform/macos/decisions/decisions.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"
#include "support/liveness.h"

namespace tollvane {
namespace {

std::size_t run(const Alert& value) {
  NSAlert* alert = [[NSAlert alloc] init];
  alert.messageText = shown(value.messageText);
  alert.informativeText = shown(value.informativeText);
  const std::size_t count = value.buttons.size();
  for (std::size_t i = 0; i < count; ++i) {
    NSButton* button = [alert addButtonWithTitle:shown(value.buttons[i])];
    if (takesEscape(i, count)) button.keyEquivalent = @"\e";
  }
  // From macOS 14 on, the system may refuse to make Tollvane the active application; its alerts are seen all the same.
  [alert layout];
  [alert.window orderFrontRegardless];
  return chosenButton([alert runModal], NSAlertFirstButtonReturn, count);
}

// While a block of the main queue runs, no other block does. So an alert is entered from the run loop itself: log
// lines, browsers and timers are served while it waits for its answer. The loop is then in another mode, so further
// alerts wait, and nothing wakes it for them.
class ModalAlerts : public Alerts {
 public:
  void show(const Alert& alert, std::function<void(std::size_t)> answer) override {
    const std::function<void()> present = alive_.guard([alert, answer] {
      const std::size_t button = run(alert);
      if (answer) answer(button);
    });
    CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopDefaultMode, ^{
      present();
      CFRunLoopWakeUp(CFRunLoopGetMain());
    });
    CFRunLoopWakeUp(CFRunLoopGetMain());
  }

 private:
  Liveness alive_;
};

}  // namespace

std::unique_ptr<Alerts> makeAlerts() { return std::make_unique<ModalAlerts>(); }

}  // namespace tollvane
