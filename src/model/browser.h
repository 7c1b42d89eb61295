// The seven browsers that Tollvane can talk to through an extension. Each stands for all its editions (Chrome beta,
// Firefox Nightly ...).
//
//   if (auto browser = Browser::fromAppName("Firefox")) use(browser->bundleID());
//   for (Browser browser : Browser::allCases) ...            // always in declaration order
//
// A value as small as an enumeration; any thread.
#pragma once

#include <array>
#include <compare>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/workspace.h"

namespace tollvane {

class Browser {
 public:
  enum Case { chrome, edge, brave, arc, chromium, firefox, safari };

  constexpr Browser(Case value) : value_(value) {}  // NOLINT(google-explicit-constructor): a Case is a Browser

  static const std::array<Browser, 7> allCases;

  // The browser whose raw value or display name, or of one of whose editions the bundle identifier, is exactly this
  // text (case-sensitive).
  static std::optional<Browser> fromRawValue(std::string_view rawValue);
  static std::optional<Browser> fromBundleID(std::optional<std::string_view> bundleID);
  static std::optional<Browser> fromAppName(std::string_view appName);

  std::string_view rawValue() const;  // "chrome": stands for the browser in texts that programs read
  std::string_view bundleID() const;  // of the main release
  std::string_view appName() const;   // "Google Chrome": what the user sees

  // The bundle identifiers of its editions, the main release's first.
  std::vector<std::string_view> editions() const;

  bool isGecko() const { return value_ == firefox; }

  // Both ask the system for all editions, at each call.
  bool isInstalled(const Workspace& workspace) const;
  bool isRunning(const Workspace& workspace) const;

  constexpr operator Case() const { return value_; }  // NOLINT(google-explicit-constructor): for switch and ==

 private:
  Case value_;
};

inline constexpr std::array<Browser, 7> Browser::allCases = {chrome, edge, brave, arc, chromium, firefox, safari};

}  // namespace tollvane
