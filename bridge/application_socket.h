// The way to the application: its Unix-domain socket. Any thread. Source: unix(7).
#pragma once

#include <filesystem>
#include <string>

#include "support/unique_fd.h"

namespace tollvane::bridge {

// Where the application listens; cut, as the application cuts it, to what an address can hold.
std::string applicationSocket(const std::filesystem::path& applicationSupport);

// A connection that never blocks; none when nobody listens there, or somebody else than this user does.
UniqueFd connectTo(const std::string& socket);

}  // namespace tollvane::bridge
