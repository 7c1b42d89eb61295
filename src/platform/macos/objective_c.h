// Between C++ and Foundation: texts, paths and the main queue. Any thread.
#pragma once

#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "support/text.h"

namespace tollvane {

// An identifier or a path, exactly. Bytes that are no UTF-8 are read as Latin-1, so that there is always a text.
inline NSString* nsString(std::string_view text) {
  NSString* string = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
  if (string != nil) return string;
  return [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSISOLatin1StringEncoding];
}

// A text for people's eyes, on one line.
inline NSString* shown(std::string_view text) { return nsString(text::withoutControls(text)); }

// Empty for nil.
inline std::string utf8(NSString* string) {
  const char* bytes = string.UTF8String;
  return bytes == nullptr ? "" : bytes;
}

inline NSURL* fileURL(const std::filesystem::path& path) { return [NSURL fileURLWithPath:nsString(path.native())]; }

inline std::optional<std::filesystem::path> pathOf(NSURL* url) {
  const char* bytes = url.fileSystemRepresentation;
  return bytes == nullptr ? std::nullopt : std::optional<std::filesystem::path>(bytes);
}

// Completions of the system's services come on threads of their own.
inline void onMainQueue(std::function<void()> block) {
  dispatch_async(dispatch_get_main_queue(), ^{
    block();
  });
}

}  // namespace tollvane
