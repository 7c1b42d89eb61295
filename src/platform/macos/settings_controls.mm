#include "platform/macos/settings_controls.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "platform/macos/objective_c.h"
#include "platform/macos/text_look.h"
#include "support/text.h"

// The target of a switch, a check box or a button. A control holds its target weakly, so its view holds it.
@interface TVControlTarget : NSObject {
 @public
  tollvane::ui::Control value;
}
- (void)operate:(NSControl*)sender;
@end

// A row of views that keeps the target of its control.
@interface TVRow : NSStackView
@property(strong) TVControlTarget* controlTarget;
@end

@implementation TVRow
@end

namespace tollvane {
namespace {

constexpr CGFloat iconSize = 18;
constexpr CGFloat dotSize = 8;
constexpr CGFloat roomForSwitch = 60;

NSControlStateValue stateOf(bool isOn) { return isOn ? NSControlStateValueOn : NSControlStateValueOff; }
NSString* shown(const std::string& text) { return nsString(text::withoutControls(text)); }

TVRow* row(NSArray<NSView*>* views, TVControlTarget* target) {
  TVRow* row = [[TVRow alloc] initWithFrame:NSZeroRect];
  row.orientation = NSUserInterfaceLayoutOrientationHorizontal;
  row.distribution = NSStackViewDistributionFill;
  row.alignment = NSLayoutAttributeCenterY;
  for (NSView* view in views) [row addArrangedSubview:view];
  row.controlTarget = target;
  return row;
}

NSTextField* label(double width) {
  NSTextField* field = width > 0 ? [NSTextField wrappingLabelWithString:@""] : [NSTextField labelWithString:@""];
  field.selectable = NO;
  field.preferredMaxLayoutWidth = std::max(width, 0.0);
  // Or a long text would make the window wider.
  [field setContentCompressionResistancePriority:NSLayoutPriorityDefaultLow
                                  forOrientation:NSLayoutConstraintOrientationHorizontal];
  return field;
}

TVControlTarget* targetOf(const ui::Control& value, NSControl* control) {
  TVControlTarget* target = [[TVControlTarget alloc] init];
  target->value = value;
  control.target = target;
  control.action = @selector(operate:);
  return target;
}

ControlView textView(double width) {
  NSTextField* field = label(width);
  return {.view = field, .update = [field](const ui::Control& control) {
            const auto& text = std::get<ui::Text>(control);
            field.stringValue = shown(text.text);
            field.font = nsFont(text);
            field.textColor = nsColor(text.color);
          }};
}

ControlView imageView() {
  NSImageView* view = [[NSImageView alloc] initWithFrame:NSZeroRect];
  return {.view = view, .update = [view](const ui::Control& control) {
            const auto& value = std::get<ui::Image>(control);
            NSImageSymbolConfiguration* size =
                [NSImageSymbolConfiguration configurationWithPointSize:value.size weight:nsWeight(value.weight)];
            view.image = [symbol(nsString(value.symbolName), @"") imageWithSymbolConfiguration:size];
            view.contentTintColor = nsColor(value.color);
          }};
}

ControlView applicationIconView() {
  NSImageView* view = [[NSImageView alloc] initWithFrame:NSZeroRect];
  [view.widthAnchor constraintEqualToConstant:iconSize].active = YES;
  [view.heightAnchor constraintEqualToConstant:iconSize].active = YES;
  return {.view = view, .update = [view](const ui::Control& control) {
            const auto& name = std::get<ui::ApplicationIcon>(control).name;
            view.image = name.empty() ? nil : [NSWorkspace.sharedWorkspace iconForFile:nsString(name)];
          }};
}

ControlView dotView() {
  NSImageView* view = [[NSImageView alloc] initWithFrame:NSZeroRect];
  NSImageSymbolConfiguration* size = [NSImageSymbolConfiguration configurationWithPointSize:dotSize
                                                                                     weight:NSFontWeightRegular];
  view.image = [symbol(@"circle.fill", @"") imageWithSymbolConfiguration:size];
  return {.view = view, .update = [view](const ui::Control& control) {
            const auto& dot = std::get<ui::Dot>(control);
            view.contentTintColor = nsColor(dot.color);
            view.alphaValue = dot.opacity;
          }};
}

ControlView checkBoxView(const ui::Toggle& value) {
  NSButton* box = [NSButton checkboxWithTitle:@"" target:nil action:nil];
  TVControlTarget* target = targetOf(value, box);
  return {
    .view = row(@[ box ], target), .focus = box, .identifier = nsString(value.identifier),
    .update = [box, target](const ui::Control& control) {
      target->value = control;
      const auto& toggle = std::get<ui::Toggle>(control);
      box.accessibilityLabel = shown(toggle.title);
      box.state = stateOf(toggle.isOn);
    }
  };
}

// The title takes all room that the switch leaves.
ControlView switchView(const ui::Toggle& value, double width) {
  NSTextField* title = label(width - roomForSwitch);
  [title setContentHuggingPriority:1 forOrientation:NSLayoutConstraintOrientationHorizontal];
  NSSwitch* toggle = [[NSSwitch alloc] initWithFrame:NSZeroRect];
  TVControlTarget* target = targetOf(value, toggle);
  return {
    .view = row(@[ title, toggle ], target), .focus = toggle, .identifier = nsString(value.identifier),
    .update = [title, toggle, target](const ui::Control& control) {
      target->value = control;
      const auto& now = std::get<ui::Toggle>(control);
      title.stringValue = shown(now.title);
      toggle.accessibilityLabel = shown(now.title);
      toggle.state = stateOf(now.isOn);
    }
  };
}

// The window's only button is the one that Return presses.
ControlView buttonView(const ui::Button& value) {
  NSButton* button = [NSButton buttonWithTitle:@"" target:nil action:nil];
  button.keyEquivalent = @"\r";
  TVControlTarget* target = targetOf(value, button);
  return {
    .view = row(@[ button ], target), .focus = button, .identifier = nsString(value.identifier),
    .update = [button, target](const ui::Control& control) {
      target->value = control;
      const auto& now = std::get<ui::Button>(control);
      button.title = shown(now.title);
      button.enabled = now.isEnabled;
    }
  };
}

ControlView made(const ui::Control& control, double width) {
  if (std::holds_alternative<ui::Text>(control)) return textView(width);
  if (std::holds_alternative<ui::Image>(control)) return imageView();
  if (std::holds_alternative<ui::ApplicationIcon>(control)) return applicationIconView();
  if (std::holds_alternative<ui::Dot>(control)) return dotView();
  if (const auto* button = std::get_if<ui::Button>(&control)) return buttonView(*button);
  const auto& toggle = std::get<ui::Toggle>(control);
  return toggle.style == ui::Toggle::Style::checkBox ? checkBoxView(toggle) : switchView(toggle, width);
}

}  // namespace

ControlView makeControlView(const ui::Control& control, double width) {
  ControlView view = made(control, width);
  view.update(control);
  return view;
}

}  // namespace tollvane

using namespace tollvane;

@implementation TVControlTarget

// The control may be gone after its function was called.
- (void)operate:(NSControl*)sender {
  if (const auto* toggle = std::get_if<ui::Toggle>(&value)) {
    const bool isOn = sender.integerValue == NSControlStateValueOn;
    if (const auto set = toggle->set) set(isOn);
  } else if (const auto* button = std::get_if<ui::Button>(&value)) {
    if (const auto action = button->action) action();
  }
}

@end
