// https://developer.apple.com/documentation/corefoundation
#pragma once

#include <stdint.h>

extern "C" {

// https://developer.apple.com/documentation/corefoundation/cftype
typedef const void* CFTypeRef;
typedef long CFIndex;
void CFRelease(CFTypeRef object);

// https://developer.apple.com/documentation/corefoundation/cfallocator
typedef const struct __CFAllocator* CFAllocatorRef;

// https://developer.apple.com/documentation/corefoundation/cfstring
typedef const struct __attribute__((objc_bridge(NSString))) __CFString* CFStringRef;
typedef uint32_t CFStringEncoding;
extern const CFStringEncoding kCFStringEncodingUTF8;
bool CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, CFStringEncoding encoding);

// https://developer.apple.com/documentation/corefoundation/cfurl
typedef const struct __CFURL* CFURLRef;
CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const unsigned char* path, CFIndex length,
                                                 unsigned char isDirectory);

// https://developer.apple.com/documentation/corefoundation/cfbundle
typedef struct __CFBundle* CFBundleRef;
CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef url);
CFStringRef CFBundleGetIdentifier(CFBundleRef bundle);

// https://developer.apple.com/documentation/corefoundation/cfrunloop
typedef struct __CFRunLoop* CFRunLoopRef;
extern const CFStringRef kCFRunLoopDefaultMode;
CFRunLoopRef CFRunLoopGetMain(void);
void CFRunLoopPerformBlock(CFRunLoopRef loop, CFTypeRef mode, void (^block)(void));
void CFRunLoopWakeUp(CFRunLoopRef loop);

}  // extern "C"
