#import <AppKit/AppKit.h>
#import <CoreFoundation/CoreFoundation.h>

#include <deque>
#include <utility>

#include "platform/macos/decisions/alert_buttons.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"
#include "support/liveness.h"
#include "support/text.h"

namespace tollvane {
namespace {

using Answer = std::function<void(std::size_t)>;

std::size_t run(const Alert& value) {
  NSAlert* alert = [[NSAlert alloc] init];
  alert.messageText = nsString(text::withoutControls(value.messageText));
  alert.informativeText = nsString(text::withoutControls(value.informativeText));
  const std::size_t count = value.buttons.size();
  for (std::size_t i = 0; i < count; ++i) {
    NSButton* button = [alert addButtonWithTitle:nsString(text::withoutControls(value.buttons[i]))];
    if (takesEscape(i, count)) button.keyEquivalent = @"\e";
  }
  // From macOS 14 on, the system may refuse to make Tollvane the active application; its alerts are seen all the same.
  [alert layout];
  [alert.window orderFrontRegardless];
  return chosenButton([alert runModal], NSAlertFirstButtonReturn, count);
}

// While a block of the main queue runs, no other block does. So an alert is entered from the run loop itself: log
// lines, browsers and timers are served while it waits for its answer.
class ModalAlerts : public Alerts {
 public:
  void show(const Alert& alert, Answer answer) override {
    waiting_.emplace_back(alert, std::move(answer));
    if (!std::exchange(shows_, true)) enter();
  }

 private:
  void enter() {
    auto next = alive_.guard([this] { showNext(); });
    std::function<void()> block = next;
    CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
      block();
    });
    CFRunLoopWakeUp(CFRunLoopGetMain());
  }

  void showNext() {
    const auto [alert, answer] = std::move(waiting_.front());
    waiting_.pop_front();
    const std::size_t button = run(alert);
    shows_ = !waiting_.empty();
    if (shows_) enter();
    if (answer) answer(button);
  }

  std::deque<std::pair<Alert, Answer>> waiting_;
  bool shows_ = false;
  Liveness alive_;
};

}  // namespace

std::unique_ptr<Alerts> makeAlerts() { return std::make_unique<ModalAlerts>(); }

}  // namespace tollvane
