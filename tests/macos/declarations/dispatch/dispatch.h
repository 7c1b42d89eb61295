// https://developer.apple.com/documentation/dispatch
#pragma once

#include <stdint.h>

extern "C" {

// The objects of the library are objects of the language: https://developer.apple.com/documentation/dispatch
@class NSObject;
@protocol OS_dispatch_queue;
@protocol OS_dispatch_source;
typedef NSObject<OS_dispatch_queue>* dispatch_queue_t;
typedef NSObject<OS_dispatch_source>* dispatch_source_t;
typedef void (^dispatch_block_t)(void);

// https://developer.apple.com/documentation/dispatch/dispatch-queue
dispatch_queue_t dispatch_get_main_queue(void);
void dispatch_async(dispatch_queue_t queue, dispatch_block_t block);

// https://developer.apple.com/documentation/dispatch/dispatch-time
typedef uint64_t dispatch_time_t;
extern const dispatch_time_t DISPATCH_TIME_NOW;
extern const dispatch_time_t DISPATCH_TIME_FOREVER;
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t nanoseconds);

// https://developer.apple.com/documentation/dispatch/dispatch-source
typedef const struct dispatch_source_type_s* dispatch_source_type_t;
extern const dispatch_source_type_t DISPATCH_SOURCE_TYPE_READ;
extern const dispatch_source_type_t DISPATCH_SOURCE_TYPE_WRITE;
extern const dispatch_source_type_t DISPATCH_SOURCE_TYPE_VNODE;
extern const dispatch_source_type_t DISPATCH_SOURCE_TYPE_SIGNAL;
extern const dispatch_source_type_t DISPATCH_SOURCE_TYPE_TIMER;
static const uintptr_t DISPATCH_TIMER_STRICT = 0x1;
static const uintptr_t DISPATCH_VNODE_DELETE = 0x1;
static const uintptr_t DISPATCH_VNODE_WRITE = 0x2;
static const uintptr_t DISPATCH_VNODE_RENAME = 0x20;
dispatch_source_t dispatch_source_create(dispatch_source_type_t type, uintptr_t handle, uintptr_t mask,
                                         dispatch_queue_t queue);
void dispatch_source_set_event_handler(dispatch_source_t source, dispatch_block_t handler);
void dispatch_source_set_cancel_handler(dispatch_source_t source, dispatch_block_t handler);
void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, uint64_t interval, uint64_t leeway);
void dispatch_source_cancel(dispatch_source_t source);
void dispatch_activate(dispatch_source_t source);

}  // extern "C"
