// Where Tollvane's things are: its files on this computer, and its pages on the web. Any thread.
#pragma once

#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/bundle.h"
#include "platform/files.h"
#include "platform/locations.h"

namespace tollvane {

// The support directory is found and made at the first question, and then stays the same.
class Paths {
 public:
  Paths(const Locations& locations, Files& files) : locations_(locations), files_(files) {}

  // "Tollvane" in the user's application data. Made if missing; if it cannot be made, the path is the same, and writing
  // there fails. A user without any place for application data is a fatal error.
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

// The address of a page, from a path that begins with "/". Scheme and host are the bundle's "TollvaneSite"
// ("https://www.example.org"); a bundle that names none asks a host that does not exist, so that nobody real is asked.
std::string sitePage(const Bundle& bundle, std::string_view path);

}  // namespace tollvane
