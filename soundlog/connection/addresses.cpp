#include "soundlog/connection/addresses.h"

#include <charconv>
#include <cstdlib>

#include "support/ascii.h"

namespace tollvane::soundlog {
namespace {

std::optional<std::string> firstOf(const Environment& environment, std::initializer_list<const char*> names) {
  for (const char* name : names) {
    if (auto value = environment(name); value && !value->empty()) return value;
  }
  return std::nullopt;
}

// Values in bus addresses may have escaped bytes, like "%2f".
std::string unescaped(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    unsigned byte = 0;
    const char* const digits = text.data() + at + 1;
    if (text[at] == '%' && at + 2 < text.size() && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
      result += static_cast<char>(byte);
      at += 2;
    } else {
      result += text[at];
    }
  }
  return result;
}

std::optional<std::filesystem::path> busSocket(std::string_view address) {
  constexpr std::string_view unix = "unix:";
  if (!address.starts_with(unix)) return std::nullopt;
  for (std::string_view rest = address.substr(unix.size()); !rest.empty();) {
    constexpr std::string_view pathKey = "path=";
    const std::string_view pair = ascii::takePart(rest, ',');
    if (pair.starts_with(pathKey)) return std::filesystem::path(unescaped(pair.substr(pathKey.size())));
  }
  return std::nullopt;
}

std::optional<std::filesystem::path> pulsePath(std::string_view server) {
  // "{machine}unix:/path" is an address for the machine with this id only.
  if (server.starts_with('{')) ascii::takePart(server, '}');
  constexpr std::string_view unix = "unix:";
  if (server.starts_with(unix)) server.remove_prefix(unix.size());
  return server.starts_with('/') ? std::optional<std::filesystem::path>(server) : std::nullopt;
}

std::string withoutInstance(std::string_view address) {
  std::string result;
  while (!address.empty()) {
    const std::string_view pair = ascii::takePart(address, ',');
    if (pair.empty() || pair.starts_with("guid=")) continue;
    if (!result.empty()) result += ',';
    result += pair;
  }
  return result;
}

}  // namespace

Environment processEnvironment() {
  return [](const char* name) -> std::optional<std::string> {
    const char* const value = std::getenv(name);
    if (!value || !*value) return std::nullopt;
    return value;
  };
}

std::optional<std::filesystem::path> pipeWireSocket(const Environment& environment) {
  const std::filesystem::path name = firstOf(environment, {"PIPEWIRE_REMOTE"}).value_or("pipewire-0");
  if (name.is_absolute()) return name;
  const auto directory = firstOf(environment, {"PIPEWIRE_RUNTIME_DIR", "XDG_RUNTIME_DIR", "HOME", "USERPROFILE"});
  if (!directory) return std::nullopt;
  return std::filesystem::path(*directory) / name;
}

std::optional<std::filesystem::path> pulseSocket(const Environment& environment) {
  if (const auto servers = firstOf(environment, {"PULSE_SERVER"})) {
    for (std::string_view rest = *servers; !rest.empty();)
      if (auto path = pulsePath(ascii::takePart(rest, ' '))) return path;
    return std::nullopt;
  }
  if (const auto directory = firstOf(environment, {"PULSE_RUNTIME_PATH"})) {
    return std::filesystem::path(*directory) / "native";
  }
  const auto directory = firstOf(environment, {"XDG_RUNTIME_DIR"});
  if (!directory) return std::nullopt;
  return std::filesystem::path(*directory) / "pulse" / "native";
}

std::optional<BusAddress> sessionBus(const Environment& environment) {
  const auto addresses = firstOf(environment, {"DBUS_SESSION_BUS_ADDRESS"});
  if (!addresses) {
    const auto directory = firstOf(environment, {"XDG_RUNTIME_DIR"});
    if (!directory) return std::nullopt;
    const auto socket = std::filesystem::path(*directory) / "bus";
    return BusAddress{"unix:path=" + socket.string(), socket};
  }
  BusAddress bus;
  for (std::string_view rest = *addresses; !rest.empty();) {
    const std::string_view address = ascii::takePart(rest, ';');
    if (address.empty()) continue;
    if (!bus.address.empty()) bus.address += ';';
    bus.address += withoutInstance(address);
    if (!bus.socket) bus.socket = busSocket(address);
  }
  return bus;
}

bool areLocal(const Environment& environment) {
  const auto sound = firstOf(environment, {"PULSE_SERVER"}).value_or("");
  for (std::string_view rest = sound; !rest.empty();) {
    const std::string_view server = ascii::takePart(rest, ' ');
    if (!server.empty() && !pulsePath(server)) return false;
  }
  const auto bus = firstOf(environment, {"DBUS_SESSION_BUS_ADDRESS"}).value_or("");
  for (std::string_view rest = bus; !rest.empty();) {
    const std::string_view address = ascii::takePart(rest, ';');
    if (!address.empty() && !address.starts_with("unix:")) return false;
  }
  return true;
}

}  // namespace tollvane::soundlog
