#import <AppKit/AppKit.h>

#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"
#include "platform/macos/status_menu.h"
#include "platform/macos/text_look.h"
#include "support/text.h"

namespace tollvane {
namespace {

// The bar keeps an item only as long as somebody else does.
class BarItem : public StatusItem {
 public:
  explicit BarItem(NSStatusItem* item) : item_(item) {
    item_.autosaveName = @"bell";  // where the user has dragged it to
  }
  ~BarItem() override { [NSStatusBar.systemStatusBar removeStatusItem:item_]; }

  void setImage(std::string_view symbolName, std::string_view accessibilityDescription) override {
    NSImage* image = symbol(nsString(symbolName), nsString(accessibilityDescription));
    [image setTemplate:YES];
    item_.button.image = image;
  }

  void setToolTip(std::string_view text) override { item_.button.toolTip = nsString(text::withoutControls(text)); }

  void setMenu(MenuDelegate& delegate) override {
    menu_ = [[TVStatusMenu alloc] initWithContent:delegate];
    item_.menu = menu_.menu;
  }

 private:
  NSStatusItem* item_;
  TVStatusMenu* menu_ = nil;
};

class SystemStatusBar : public StatusBar {
 public:
  std::unique_ptr<StatusItem> makeStatusItem() override {
    NSStatusItem* item = [NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength];
    return item == nil ? nullptr : std::make_unique<BarItem>(item);
  }
};

}  // namespace

std::unique_ptr<StatusBar> makeStatusBar() { return std::make_unique<SystemStatusBar>(); }

}  // namespace tollvane
