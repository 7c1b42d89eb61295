// Where the sound servers and the session bus listen, as the environment says. Pure; any thread.
// Sources: pipewire(1) (PIPEWIRE_RUNTIME_DIR, PIPEWIRE_REMOTE), the server strings of pulseaudio(1), "Server
// Addresses" in freedesktop.org's D-Bus documentation.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tollvane::soundlog {

// An environment variable's value; absent when it is not set. An empty one counts as not set.
using Environment = std::function<std::optional<std::string>(const char* name)>;

Environment processEnvironment();

// Absent: not a socket in the file system, so its appearance cannot be waited for.
std::optional<std::filesystem::path> pipeWireSocket(const Environment& environment);
std::optional<std::filesystem::path> pulseSocket(const Environment& environment);

struct BusAddress {
  std::string address;                          // for connecting
  std::optional<std::filesystem::path> socket;  // of the first address that is one in the file system
};

// Absent when the environment names no session bus. Ids of bus instances are removed from the address, because a bus
// that is started anew has another.
std::optional<BusAddress> sessionBus(const Environment& environment);

}  // namespace tollvane::soundlog
