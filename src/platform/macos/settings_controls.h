// The controls of the settings window. Main thread only.
#pragma once

#import <AppKit/AppKit.h>

#include <functional>

#include "platform/settings_window.h"

namespace tollvane {

// One control of the window's content as AppKit shows it.
struct ControlView {
  NSView* view = nil;
  NSView* focus = nil;         // what has the keyboard focus if the user operates the control; nil: it never has
  NSString* identifier = @"";  // the control's own
  std::function<void(const ui::Control&)> update;  // takes a new value of the same kind
};

// `width`: the room for the control, at which its text goes on in another line; 0: the text has one line.
ControlView makeControlView(const ui::Control& control, double width);

}  // namespace tollvane
