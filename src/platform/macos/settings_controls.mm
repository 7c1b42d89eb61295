#include "platform/macos/settings_controls.h"

#include <algorithm>
#include <variant>

#include "platform/macos/objective_c.h"
#include "platform/macos/text_look.h"

// The target of a switch, a check box or a button.
@interface TVControlTarget : NSObject {
 @public
  tollvane::ui::Control value;
}
- (void)operate:(NSControl*)sender;
@end

namespace tollvane {
namespace {

constexpr CGFloat iconSize = 18;
constexpr CGFloat dotSize = 8;
constexpr CGFloat gap = 8;
constexpr CGFloat roomForSwitch = 60;

NSControlStateValue stateOf(bool isOn) { return isOn ? NSControlStateValueOn : NSControlStateValueOff; }

template <class Kind, class Update>
ControlView shownIn(NSView* view, Update update) {
  return {.view = view, .update = [update](const ui::Control& control) { update(std::get<Kind>(control)); }};
}

// A control holds its target weakly; this holds it.
template <class Kind, class Update>
ControlView operatedIn(NSView* view, NSControl* operated, Update update) {
  TVControlTarget* target = [[TVControlTarget alloc] init];
  operated.target = target;
  operated.action = @selector(operate:);
  return {.view = view, .operated = operated, .update = [operated, target, update](const ui::Control& control) {
            target->value = control;
            const Kind& value = std::get<Kind>(control);
            operated.identifier = nsString(value.identifier);
            operated.accessibilityLabel = shown(value.title);
            update(value);
          }};
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

ControlView textView(double width) {
  NSTextField* field = label(width);
  return shownIn<ui::Text>(field, [field](const ui::Text& text) {
    field.stringValue = shown(text.text);
    field.font = nsFont(text);
    field.textColor = nsColor(text.color);
  });
}

NSImage* sized(std::string_view name, double size, FontWeight weight) {
  NSImageSymbolConfiguration* look = [NSImageSymbolConfiguration configurationWithPointSize:size
                                                                                     weight:nsWeight(weight)];
  return [symbol(name, nil) imageWithSymbolConfiguration:look];
}

ControlView imageView(const ui::Control& control) {
  NSImageView* view = [[NSImageView alloc] initWithFrame:NSZeroRect];
  if (std::holds_alternative<ui::Image>(control))
    return shownIn<ui::Image>(view, [view](const ui::Image& image) {
      view.image = sized(image.symbolName, image.size, image.weight);
      view.contentTintColor = nsColor(image.color);
    });
  if (std::holds_alternative<ui::Dot>(control))
    return shownIn<ui::Dot>(view, [view](const ui::Dot& dot) {
      view.image = sized("circle.fill", dotSize, FontWeight::regular);
      view.contentTintColor = nsColor(dot.color);
      view.alphaValue = dot.opacity;
    });
  [view.widthAnchor constraintEqualToConstant:iconSize].active = YES;
  [view.heightAnchor constraintEqualToConstant:iconSize].active = YES;
  return shownIn<ui::ApplicationIcon>(view, [view](const ui::ApplicationIcon& icon) {
    view.image = icon.name.empty() ? nil : [NSWorkspace.sharedWorkspace iconForFile:nsString(icon.name)];
  });
}

ControlView checkBoxView() {
  NSButton* box = [NSButton checkboxWithTitle:@"" target:nil action:nil];
  return operatedIn<ui::Toggle>(box, box, [box](const ui::Toggle& toggle) { box.state = stateOf(toggle.isOn); });
}

// The title takes all room that the switch leaves.
ControlView switchView(double width) {
  NSTextField* title = label(width - roomForSwitch);
  [title setContentHuggingPriority:1 forOrientation:NSLayoutConstraintOrientationHorizontal];
  NSSwitch* control = [[NSSwitch alloc] initWithFrame:NSZeroRect];
  NSStackView* row = stack(NSUserInterfaceLayoutOrientationHorizontal, NSLayoutAttributeCenterY, gap);
  [row addArrangedSubview:title];
  [row addArrangedSubview:control];
  return operatedIn<ui::Toggle>(row, control, [title, control](const ui::Toggle& toggle) {
    title.stringValue = shown(toggle.title);
    control.state = stateOf(toggle.isOn);
  });
}

// The window's only button is the one that Return presses. Beside nothing, it keeps its own width.
ControlView buttonView() {
  NSButton* button = [NSButton buttonWithTitle:@"" target:nil action:nil];
  button.keyEquivalent = @"\r";
  NSStackView* row = stack(NSUserInterfaceLayoutOrientationHorizontal, NSLayoutAttributeCenterY, gap);
  row.distribution = NSStackViewDistributionGravityAreas;
  [row addView:button inGravity:NSStackViewGravityLeading];
  return operatedIn<ui::Button>(row, button, [button](const ui::Button& value) {
    button.title = shown(value.title);
    button.enabled = value.isEnabled;
  });
}

ControlView made(const ui::Control& control, double width) {
  if (std::holds_alternative<ui::Text>(control)) return textView(width);
  if (std::holds_alternative<ui::Button>(control)) return buttonView();
  if (const auto* toggle = std::get_if<ui::Toggle>(&control))
    return toggle->style == ui::Toggle::Style::checkBox ? checkBoxView() : switchView(width);
  return imageView(control);
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

// Control and target may be gone after the function was called.
- (void)operate:(NSControl*)sender {
  if (const auto* toggle = std::get_if<ui::Toggle>(&value)) {
    const bool isOn = sender.integerValue == NSControlStateValueOn;
    if (const auto set = toggle->set) set(isOn);
  } else if (const auto* button = std::get_if<ui::Button>(&value)) {
    if (const auto action = button->action) action();
  }
}

@end
