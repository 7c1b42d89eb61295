// Where Tollvane keeps its files. The support directory is found and made at the first question and then stays the
// same. Any thread.
#pragma once

#include <filesystem>
#include <mutex>
#include <string>

#include "platform/files.h"
#include "platform/locations.h"

namespace tollvane {

class Paths {
 public:
  Paths(const Locations& locations, Files& files) : locations_(locations), files_(files) {}

  // "Tollvane" in the user's application data. Made if missing; if it cannot be made, the path is the same and whoever
  // writes there fails. A user without any place for application data is a fatal error.
  const std::filesystem::path& supportDir() const;

  std::filesystem::path history() const { return supportDir() / "history.txt"; }

  // Of the Unix-domain socket; neither shortened nor checked for length.
  std::string bridgeSocket() const { return supportDir() / bridgeSocketName; }

 private:
  const Locations& locations_;
  Files& files_;
  mutable std::once_flag found_;
  mutable std::filesystem::path supportDir_;
};

}  // namespace tollvane
