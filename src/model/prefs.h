// The user's settings, by name. Every read asks the store, and every change is stored at once. Main thread only.
#pragma once

#include <string_view>

#include "platform/defaults.h"

namespace tollvane {

class Prefs {
 public:
  explicit Prefs(Defaults& store) : store_(store) {}

  // Mark background browser tabs that played a sound. Off until the user turns it on.
  bool markTabs() const { return boolean("markTabs", false); }
  void setMarkTabs(bool on) { store_.set("markTabs", on); }

  // Offer the browser extension under browser sounds in the menu. On until the user turns it off.
  bool suggestExtension() const { return boolean("suggestExtension", true); }
  void setSuggestExtension(bool on) { store_.set("suggestExtension", on); }

  // Whether the first launch has been handled.
  bool hasLaunchedBefore() const { return boolean("hasLaunchedBefore", false); }
  void setHasLaunchedBefore(bool on) { store_.set("hasLaunchedBefore", on); }

  // When the last update check was completed, in seconds since 1970-01-01 00:00 UTC; 0 before the first.
  double updateLastCheck() const;
  void setUpdateLastCheck(double seconds) { store_.set("updateLastCheck", seconds); }

 private:
  // The stored truth value; `otherwise` if none exists, or if something else is stored.
  bool boolean(std::string_view key, bool otherwise) const;

  Defaults& store_;
};

}  // namespace tollvane
