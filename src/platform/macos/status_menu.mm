#include "platform/macos/status_menu.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/macos/decisions/menu_title.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/text_look.h"

// What an NSMenuItem is about: the item of the core.
@interface TVMenuItemBox : NSObject {
 @public
  tollvane::MenuItem value;
}
@end

@implementation TVMenuItemBox
@end

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

double widthOf(const MenuTitle& title) {
  if (title.columnText.empty()) return 0;
  NSDictionary<NSAttributedStringKey, id>* look = @{NSFontAttributeName : nsFont(title.columnFont)};
  return [nsString(title.columnText) sizeWithAttributes:look].width;
}

// One column for the whole menu, as wide as its widest text.
NSParagraphStyle* paragraphFor(const std::vector<MenuItem>& items) {
  double width = 0;
  for (const MenuItem& item : items) width = std::max(width, widthOf(menuTitle(item.attributedTitle)));
  NSMutableParagraphStyle* paragraph = [[NSMutableParagraphStyle alloc] init];
  if (width > 0)
    paragraph.tabStops = @[ [[NSTextTab alloc] initWithTextAlignment:NSTextAlignmentNatural
                                                            location:std::ceil(width)
                                                             options:@{}] ];
  return paragraph;
}

NSMenu* emptyMenu() {
  NSMenu* menu = [[NSMenu alloc] initWithTitle:@""];
  // The system would enable every item that has an action, whatever its own state.
  menu.autoenablesItems = NO;
  return menu;
}

}  // namespace
}  // namespace tollvane

using namespace tollvane;

@implementation TVStatusMenu {
  MenuDelegate* _content;
  BOOL _updates;
}

- (instancetype)initWithContent:(MenuDelegate&)content {
  self = [super init];
  if (self != nil) {
    _content = &content;
    _menu = emptyMenu();
    _menu.delegate = self;
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
  NSMenuItem* item = [[NSMenuItem alloc] initWithTitle:nsString(text::withoutControls(value.title))
                                                action:@selector(choose:)
                                         keyEquivalent:nsString(value.keyEquivalent)];
  item.target = self;
  item.enabled = value.isEnabled;
  if (!value.attributedTitle.empty()) item.attributedTitle = drawn(menuTitle(value.attributedTitle), paragraph);
  if (!value.toolTip.empty()) item.toolTip = nsString(text::withoutControls(value.toolTip));
  TVMenuItemBox* box = [[TVMenuItemBox alloc] init];
  box->value = value;
  item.representedObject = box;
  if (!value.submenu.empty()) {
    item.submenu = emptyMenu();
    [self add:value.submenu to:item.submenu];
  }
  return item;
}

// The action may make the menu anew, and the item with it.
- (void)choose:(NSMenuItem*)item {
  TVMenuItemBox* box = item.representedObject;
  const MenuItem chosen = box->value;
  if (chosen.action) chosen.action(chosen);
}

@end
