// Where Tollvane's files are on this computer, and where its pages are on the web. Any thread.
#pragma once

#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/bundle.h"
#include "platform/files.h"
#include "platform/locations.h"

namespace tollvane {

// The support directory is found and created when it is first needed, and then stays the same.
class Paths {
 public:
  Paths(const Locations& locations, Files& files) : locations_(locations), files_(files) {}

  // "Tollvane" in the user's application data. Created if missing; if it cannot be created, the path is the same, and
  // writing there fails. It is a fatal error if the user has no place for application data.
  const std::filesystem::path& supportDir() const;

  std::filesystem::path history() const { return supportDir() / "history.txt"; }

  // Path of the Unix-domain socket; neither shortened nor checked for length.
  std::string bridgeSocket() const { return supportDir() / bridgeSocketName; }

 private:
  const Locations& locations_;
  Files& files_;
  mutable std::once_flag found_;
  mutable std::filesystem::path supportDir_;
};

// The address of a page; `path` begins with "/". Scheme and host are the bundle's "TollvaneSite"
// ("https://www.example.org"). If the bundle names none, the host is one that does not exist, so that no real host is
// asked.
std::string sitePage(const Bundle& bundle, std::string_view path);

// Whether the bundle names a site that can exist. If not, no page of it is offered to anybody, and nothing is asked.
bool hasSite(const Bundle& bundle);

}  // namespace tollvane
