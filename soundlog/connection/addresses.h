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

// The value of the environment variable `name`; absent if it is not set. An empty value counts as not set.
using Environment = std::function<std::optional<std::string>(const char* name)>;

Environment processEnvironment();

// The path of the server's socket. Absent if the server has no socket in the file system: then nothing can wait for it
// to appear.
std::optional<std::filesystem::path> pipeWireSocket(const Environment& environment);
std::optional<std::filesystem::path> pulseSocket(const Environment& environment);

struct BusAddress {
  std::string address;                          // for connecting
  std::optional<std::filesystem::path> socket;  // of the first address that is in the file system
};

// Absent if the environment names no session bus. The ids of bus instances are removed from the address, because a
// restarted bus has a new one.
std::optional<BusAddress> sessionBus(const Environment& environment);

// Whether all servers that the environment names are on this computer.
bool areLocal(const Environment& environment);

}  // namespace tollvane::soundlog
