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
constexpr CGFloat roomForIcon = 40;
constexpr CGFloat titleBar = 32;

template <class View>
View* column(CGFloat spacing) {
  View* view = [[View alloc] initWithFrame:NSZeroRect];
  view.orientation = NSUserInterfaceLayoutOrientationVertical;
  view.distribution = NSStackViewDistributionFill;
  view.alignment = NSLayoutAttributeLeading;
  view.spacing = spacing;
  return view;
}

// As wide as the column.
void add(NSView* view, NSStackView* to) {
  [to addArrangedSubview:view];
  const CGFloat sides = to.edgeInsets.left + to.edgeInsets.right;
  [view.widthAnchor constraintEqualToAnchor:to.widthAnchor constant:-sides].active = YES;
}

// Over all of the other view.
void cover(NSView* with, NSView* place) {
  [place addSubview:with];
  with.translatesAutoresizingMaskIntoConstraints = NO;
  [with.topAnchor constraintEqualToAnchor:place.topAnchor].active = YES;
  [with.bottomAnchor constraintEqualToAnchor:place.bottomAnchor].active = YES;
  [with.leadingAnchor constraintEqualToAnchor:place.leadingAnchor].active = YES;
  [with.trailingAnchor constraintEqualToAnchor:place.trailingAnchor].active = YES;
}

// The elements of a section in their box.
NSView* group(NSStackView* elements) {
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
  return group;
}

class FormWindow : public SettingsWindow {
 public:
  explicit FormWindow(const Style& style) : width_(style.width - 2 * margin) {
    const NSRect screen = NSScreen.mainScreen == nil ? NSMakeRect(0, 0, style.width, style.height + titleBar)
                                                     : NSScreen.mainScreen.visibleFrame;
    const NSRect frame = NSMakeRect(0, 0, style.width, std::min<CGFloat>(style.height, screen.size.height - titleBar));
    window_ = [[NSWindow alloc] initWithContentRect:frame
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
    for (std::size_t i = 0; i < groups_.size(); ++i)
      groups_[i].accessibilityLabel = nsString(content.sections[i].title);
  }

  // From macOS 14 on, the system may refuse to make Tollvane the active application; the window is seen all the same.
  void makeKeyAndOrderFront() override {
    [window_ makeKeyAndOrderFront:nil];
    [window_ orderFrontRegardless];
  }

 private:
  // New views, with the focus and the place that the old ones had.
  void rebuild(const ui::SettingsContent& content) {
    NSString* const focused = focusedControl();
    const NSPoint place = scroll_.contentView.bounds.origin;
    controls_.clear();
    groups_.clear();
    window_.contentView = page(content);
    [window_.contentView layoutSubtreeIfNeeded];
    [scroll_.documentView scrollPoint:place];
    for (const ControlView& control : controls_)
      if (control.focus != nil && [control.identifier isEqualToString:focused])
        [window_ makeFirstResponder:control.focus];
  }

  NSString* focusedControl() const {
    NSResponder* const first = window_.firstResponder;
    for (const ControlView& control : controls_)
      if (control.focus != nil && first == control.focus) return control.identifier;
    return nil;
  }

  NSView* view(const ui::Control& control, double width) {
    controls_.push_back(makeControlView(control, width));
    return controls_.back().view;
  }

  NSView* head(const ui::SettingsContent& content) {
    NSStackView* head = [[NSStackView alloc] initWithFrame:NSZeroRect];
    head.orientation = NSUserInterfaceLayoutOrientationHorizontal;
    head.distribution = NSStackViewDistributionFill;
    head.alignment = NSLayoutAttributeTop;
    head.spacing = headGap;
    NSView* icon = view(content.icon, 0);
    [icon.widthAnchor constraintEqualToConstant:roomForIcon].active = YES;
    [head addArrangedSubview:icon];
    NSStackView* texts = column<NSStackView>(6);
    for (const ui::Text& text : content.introduction) add(view(text, width_ - roomForIcon - headGap), texts);
    [head addArrangedSubview:texts];
    return head;
  }

  // Its controls stand together at the leading edge.
  NSView* row(const ui::Row& value) {
    NSStackView* row = [[NSStackView alloc] initWithFrame:NSZeroRect];
    row.orientation = NSUserInterfaceLayoutOrientationHorizontal;
    row.distribution = NSStackViewDistributionGravityAreas;
    row.alignment = NSLayoutAttributeCenterY;
    for (const ui::Control& control : value.controls)
      [row addView:view(control, 0) inGravity:NSStackViewGravityLeading];
    return row;
  }

  NSView* element(const ui::Element& value) {
    const double width = width_ - 2 * groupMargin;
    if (const auto* text = std::get_if<ui::Text>(&value)) return view(*text, width);
    if (const auto* toggle = std::get_if<ui::Toggle>(&value)) return view(*toggle, width);
    if (const auto* button = std::get_if<ui::Button>(&value)) return view(*button, width);
    return row(std::get<ui::Row>(value));
  }

  // The controls are made in the order of controlsOf().
  NSView* page(const ui::SettingsContent& content) {
    TVPage* form = column<TVPage>(10);
    form.edgeInsets = NSEdgeInsetsMake(margin, margin, margin, margin);
    add(head(content), form);
    for (const ui::Section& section : content.sections) {
      add(view(sectionTitle(section), width_), form);
      NSStackView* elements = column<NSStackView>(8);
      elements.edgeInsets = NSEdgeInsetsMake(10, groupMargin, 10, groupMargin);
      for (const ui::Element& each : section.elements) add(element(each), elements);
      groups_.push_back(group(elements));
      add(groups_.back(), form);
    }
    NSStackView* page = column<NSStackView>(10);
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
    NSView* clip = scroll.contentView;
    form.translatesAutoresizingMaskIntoConstraints = NO;
    [form.topAnchor constraintEqualToAnchor:clip.topAnchor].active = YES;
    [form.leadingAnchor constraintEqualToAnchor:clip.leadingAnchor].active = YES;
    [form.trailingAnchor constraintEqualToAnchor:clip.trailingAnchor].active = YES;
    return scroll;
  }

  const double width_;  // of what stands in the window
  NSWindow* window_;
  NSScrollView* scroll_ = nil;
  std::vector<ControlView> controls_;
  std::vector<NSView*> groups_;
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
