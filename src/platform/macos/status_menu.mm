#include "platform/macos/status_menu.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/macos/decisions/menu_title.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/text_look.h"

namespace tollvane {
namespace {

NSAttributedString* drawn(const MenuTitle& title, NSParagraphStyle* paragraph) {
  NSMutableAttributedString* text = [[NSMutableAttributedString alloc] init];
  for (const TextRun& run : title.runs) {
    NSMutableDictionary<NSAttributedStringKey, id>* look = [NSMutableDictionary dictionary];
    look[NSFontAttributeName] = nsFont(run.font);
    if (run.color != TextColor::unset) look[NSForegroundColorAttributeName] = nsColor(run.color);
    look[NSParagraphStyleAttributeName] = paragraph;
    [text appendAttributedString:[[NSAttributedString alloc] initWithString:nsString(run.text) attributes:look]];
  }
  return text;
}

// One column for the whole menu, as wide as its widest text.
NSParagraphStyle* paragraphFor(const std::vector<MenuItem>& items) {
  double width = 0;
  for (const MenuItem& item : items) {
    const TextRun column = menuTitle(item.attributedTitle).column;
    NSDictionary<NSAttributedStringKey, id>* look = @{NSFontAttributeName : nsFont(column.font)};
    width = std::max(width, [nsString(column.text) sizeWithAttributes:look].width);
  }
  NSMutableParagraphStyle* paragraph = [[NSMutableParagraphStyle alloc] init];
  if (width > 0)
    paragraph.tabStops = @[ [[NSTextTab alloc] initWithTextAlignment:NSTextAlignmentNatural
                                                            location:std::ceil(width)
                                                             options:@{}] ];
  return paragraph;
}

}  // namespace
}  // namespace tollvane

using namespace tollvane;

@implementation TVStatusMenu {
  MenuDelegate* _content;
  BOOL _updates;
}

- (instancetype)initWithContent:(MenuDelegate&)content {
  self = [super initWithTitle:@""];
  if (self != nil) {
    _content = &content;
    self.delegate = self;
    // The system would enable every item that has an action, whatever its own state.
    self.autoenablesItems = NO;
  }
  return self;
}

// To add or remove items may ask for an update again.
- (void)menuNeedsUpdate:(NSMenu*)menu {
  if (_updates) return;
  _updates = YES;
  Menu content;
  _content->menuNeedsUpdate(content);
  [menu removeAllItems];
  [self add:content.items to:menu];
  _updates = NO;
}

- (void)add:(const std::vector<MenuItem>&)items to:(NSMenu*)menu {
  NSParagraphStyle* paragraph = paragraphFor(items);
  for (const MenuItem& item : items) [menu addItem:[self itemFor:item paragraph:paragraph]];
}

- (NSMenuItem*)itemFor:(const MenuItem&)value paragraph:(NSParagraphStyle*)paragraph {
  if (value.isSeparator) return [NSMenuItem separatorItem];
  NSMenuItem* item = [[NSMenuItem alloc] initWithTitle:shown(value.title)
                                                action:@selector(choose:)
                                         keyEquivalent:nsString(value.keyEquivalent)];
  item.target = self;
  item.enabled = value.isEnabled;
  if (!value.attributedTitle.empty()) item.attributedTitle = drawn(menuTitle(value.attributedTitle), paragraph);
  if (!value.toolTip.empty()) item.toolTip = shown(value.toolTip);
  const MenuItem chosen = value;
  item.representedObject = ^{
    if (chosen.action) chosen.action(chosen);
  };
  if (!value.submenu.empty()) {
    item.submenu = [[NSMenu alloc] initWithTitle:@""];
    item.submenu.autoenablesItems = NO;
    [self add:value.submenu to:item.submenu];
  }
  return item;
}

// The action may make the menu anew, and the item with it.
- (void)choose:(NSMenuItem*)item {
  void (^const action)() = item.representedObject;
  action();
}

@end
