// The controls of the settings window. Main thread only.
#pragma once

#import <AppKit/AppKit.h>

#include <functional>

#include "platform/settings_window.h"

namespace tollvane {

// One control of the window's content as AppKit shows it.
struct ControlView {
  NSView* view = nil;
  NSControl* operated = nil;  // what the user operates, with the control's own identifier; nil: nothing
  std::function<void(const ui::Control&)> update;  // takes a new value of the same kind
};

// `width`: the room for the control, at which its text goes on in another line; 0: the text has one line.
ControlView makeControlView(const ui::Control& control, double width);

// Views side by side or below each other.
template <class View = NSStackView>
View* stack(NSUserInterfaceLayoutOrientation orientation, NSLayoutAttribute alignment, CGFloat spacing) {
  View* view = [[View alloc] initWithFrame:NSZeroRect];
  view.orientation = orientation;
  view.alignment = alignment;
  view.spacing = spacing;
  view.distribution = NSStackViewDistributionFill;
  return view;
}

}  // namespace tollvane
