// What GNUstep's base library (1.31) calls otherwise than macOS, or lacks, and the roles need. Included before each
// file of the tests for GNUstep.
#pragma once

#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>
#import <objc/runtime.h>

// No directory can be watched there.
#define O_EVTONLY 0
#undef DISPATCH_SOURCE_TYPE_VNODE
#define DISPATCH_SOURCE_TYPE_VNODE DISPATCH_SOURCE_TYPE_READ

@interface NSURL (Tollvane)
@property(readonly) const char* fileSystemRepresentation;
@end

@interface NSTask (Tollvane)
@property(copy) NSURL* executableURL;
@property(copy) void (^terminationHandler)(NSTask*);
@end
