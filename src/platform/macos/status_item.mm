#import <AppKit/AppKit.h>

#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"
#include "platform/macos/status_menu.h"
#include "platform/macos/text_look.h"

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
    NSImage* image = symbol(symbolName, nsString(accessibilityDescription));
    [image setTemplate:YES];
    item_.button.image = image;
  }

  void setToolTip(std::string_view text) override { item_.button.toolTip = shown(text); }
  void setMenu(MenuDelegate& delegate) override { item_.menu = [[TVStatusMenu alloc] initWithContent:delegate]; }

 private:
  NSStatusItem* item_;
};

class SystemStatusBar : public StatusBar {
 public:
  std::unique_ptr<StatusItem> makeStatusItem() override {
    return std::make_unique<BarItem>([NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength]);
  }
};

}  // namespace

std::unique_ptr<StatusBar> makeStatusBar() { return std::make_unique<SystemStatusBar>(); }

}  // namespace tollvane
