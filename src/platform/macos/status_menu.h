// The menu of the status item: drawn by the system, filled by a MenuDelegate. Main thread only.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/menu.h"

@interface TVStatusMenu : NSMenu <NSMenuDelegate>

// An empty menu, which `content` fills each time the user opens it. `content` must outlive it.
- (instancetype)initWithContent:(tollvane::MenuDelegate&)content;

@end
