// The first line that the bridge sends to the application. Pure; any thread.
#pragma once

#include <string>
#include <string_view>

namespace tollvane::bridge {

inline bool isIdentifier(std::string_view text) {
  constexpr std::string_view allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.-_";
  return !text.empty() && text.size() <= 255 && text.find_first_not_of(allowed) == std::string_view::npos;
}

// `bundleID`: the browser's; what is no identifier counts as unknown. The line has no line feed.
inline std::string introductionOf(std::string_view bundleID) {
  if (!isIdentifier(bundleID)) return R"({"type":"bridge"})";
  return R"({"type":"bridge","bundleID":")" + std::string(bundleID) + R"("})";
}

}  // namespace tollvane::bridge
