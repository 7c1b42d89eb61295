#import <AppKit/AppKit.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/macos/decisions/settings_shape.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"
#include "platform/macos/settings_controls.h"

// A document that begins at its top, as a page does.
@interface TVPage : NSStackView
@end

@implementation TVPage
- (BOOL)isFlipped {
  return YES;
}
@end

namespace tollvane {
namespace {

constexpr CGFloat margin = 20;
constexpr CGFloat groupMargin = 12;
constexpr CGFloat groupRadius = 8;
constexpr CGFloat headGap = 16;
constexpr CGFloat rowGap = 8;
constexpr CGFloat roomForIcon = 40;
constexpr CGFloat titleBar = 32;

template <class View = NSStackView>
View* column(CGFloat spacing) {
  return stack<View>(NSUserInterfaceLayoutOrientationVertical, NSLayoutAttributeLeading, spacing);
}

// As wide as the column.
void add(NSView* view, NSStackView* to) {
  [to addArrangedSubview:view];
  const CGFloat sides = to.edgeInsets.left + to.edgeInsets.right;
  [view.widthAnchor constraintEqualToAnchor:to.widthAnchor constant:-sides].active = YES;
}

// As wide as the other view, from its top down.
void fillFromTop(NSView* with, NSView* place) {
  with.translatesAutoresizingMaskIntoConstraints = NO;
  [with.topAnchor constraintEqualToAnchor:place.topAnchor].active = YES;
  [with.leadingAnchor constraintEqualToAnchor:place.leadingAnchor].active = YES;
  [with.trailingAnchor constraintEqualToAnchor:place.trailingAnchor].active = YES;
}

// Over all of the other view.
void cover(NSView* with, NSView* place) {
  [place addSubview:with];
  fillFromTop(with, place);
  [with.bottomAnchor constraintEqualToAnchor:place.bottomAnchor].active = YES;
}

// The elements of a section in their box.
NSView* group(NSStackView* elements, const std::string& title) {
  NSBox* box = [[NSBox alloc] initWithFrame:NSZeroRect];
  box.boxType = NSBoxCustom;
  box.titlePosition = NSNoTitle;
  box.cornerRadius = groupRadius;
  box.borderWidth = 1;
  box.borderColor = NSColor.separatorColor;
  box.fillColor = NSColor.controlBackgroundColor;
  NSView* group = [[NSView alloc] initWithFrame:NSZeroRect];
  cover(box, group);
  cover(elements, group);
  group.accessibilityElement = YES;
  group.accessibilityRole = NSAccessibilityGroupRole;
  group.accessibilityLabel = shown(title);
  return group;
}

class FormWindow : public SettingsWindow {
 public:
  explicit FormWindow(const Style& style) : width_(style.width - 2 * margin) {
    NSScreen* screen = NSScreen.mainScreen;
    const CGFloat room = screen == nil ? style.height : screen.visibleFrame.size.height - titleBar;
    window_ = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, style.width, std::min<CGFloat>(style.height, room))
                                          styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                                            backing:NSBackingStoreBuffered
                                              defer:NO];
    window_.title = nsString(style.title);
    window_.releasedWhenClosed = NO;
    window_.autorecalculatesKeyViewLoop = YES;
    [window_ center];
  }

  void setContent(const ui::SettingsContent& content) override {
    const std::string shape = shapeOf(content);
    if (shape != shape_) rebuild(content);
    shape_ = shape;
    const auto controls = controlsOf(content);
    for (std::size_t i = 0; i < controls_.size(); ++i) controls_[i].update(controls[i]);
  }

  // From macOS 14 on, the system may refuse to make Tollvane the active application; the window is seen all the same.
  void makeKeyAndOrderFront() override {
    [window_ makeKeyAndOrderFront:nil];
    [window_ orderFrontRegardless];
  }

 private:
  // New views, with the focus and the place that the old ones had.
  void rebuild(const ui::SettingsContent& content) {
    NSResponder* const first = window_.firstResponder;
    NSString* focused = nil;
    for (const ControlView& control : controls_)
      if (control.operated == first) focused = control.operated.identifier;
    const NSPoint place = scroll_.contentView.bounds.origin;
    controls_.clear();
    window_.contentView = page(content);
    [window_.contentView layoutSubtreeIfNeeded];
    [scroll_.documentView scrollPoint:place];
    for (const ControlView& control : controls_)
      if (focused != nil && [control.operated.identifier isEqualToString:focused])
        [window_ makeFirstResponder:control.operated];
  }

  NSView* view(const ui::Control& control, double width) {
    controls_.push_back(makeControlView(control, width));
    return controls_.back().view;
  }

  NSView* head(const ui::SettingsContent& content) {
    NSStackView* head = stack(NSUserInterfaceLayoutOrientationHorizontal, NSLayoutAttributeTop, headGap);
    NSView* icon = view(content.icon, 0);
    [icon.widthAnchor constraintEqualToConstant:roomForIcon].active = YES;
    [head addArrangedSubview:icon];
    NSStackView* texts = column(6);
    for (const ui::Text& text : content.introduction) add(view(text, width_ - roomForIcon - headGap), texts);
    [head addArrangedSubview:texts];
    return head;
  }

  // The controls of a row stand together at the leading edge.
  NSView* element(const ui::Element& value) {
    const auto controls = controlsOf(value);
    if (!std::holds_alternative<ui::Row>(value)) return view(controls.front(), width_ - 2 * groupMargin);
    NSStackView* row = stack(NSUserInterfaceLayoutOrientationHorizontal, NSLayoutAttributeCenterY, rowGap);
    row.distribution = NSStackViewDistributionGravityAreas;
    for (const ui::Control& control : controls) [row addView:view(control, 0) inGravity:NSStackViewGravityLeading];
    return row;
  }

  // The controls are made in the order of controlsOf().
  NSView* page(const ui::SettingsContent& content) {
    TVPage* form = column<TVPage>(10);
    form.edgeInsets = NSEdgeInsetsMake(margin, margin, margin, margin);
    add(head(content), form);
    for (const ui::Section& section : content.sections) {
      add(view(sectionTitle(section), width_), form);
      NSStackView* elements = column(8);
      elements.edgeInsets = NSEdgeInsetsMake(10, groupMargin, 10, groupMargin);
      for (const ui::Element& each : section.elements) add(element(each), elements);
      add(group(elements, section.title), form);
    }
    NSStackView* page = column(10);
    page.edgeInsets = NSEdgeInsetsMake(0, 0, 12, 0);
    scroll_ = scrolling(form);
    add(scroll_, page);
    NSTextField* footer = (NSTextField*)view(content.footer, width_);
    footer.alignment = NSTextAlignmentCenter;
    add(footer, page);
    return page;
  }

  static NSScrollView* scrolling(NSView* form) {
    NSScrollView* scroll = [[NSScrollView alloc] initWithFrame:NSZeroRect];
    scroll.hasVerticalScroller = YES;
    scroll.drawsBackground = NO;
    scroll.documentView = form;
    fillFromTop(form, scroll.contentView);
    return scroll;
  }

  const double width_;  // of what stands in the window
  NSWindow* window_;
  NSScrollView* scroll_ = nil;
  std::vector<ControlView> controls_;
  std::string shape_;
};

class FormWindows : public SettingsWindows {
 public:
  std::unique_ptr<SettingsWindow> make(const SettingsWindow::Style& style) override {
    return std::make_unique<FormWindow>(style);
  }
};

}  // namespace

std::unique_ptr<SettingsWindows> makeSettingsWindows() { return std::make_unique<FormWindows>(); }

}  // namespace tollvane
