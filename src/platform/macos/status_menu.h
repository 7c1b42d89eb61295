// The menu of the status item: drawn by the system, filled by a MenuDelegate. Main thread only.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/menu.h"

// The delegate of a menu, and the target of its items. A menu holds its delegate weakly.
@interface TVStatusMenu : NSObject <NSMenuDelegate>

// An empty menu, which `content` fills each time the user opens it. `content` must outlive it.
- (instancetype)initWithContent:(tollvane::MenuDelegate&)content;

@property(readonly) NSMenu* menu;

@end
