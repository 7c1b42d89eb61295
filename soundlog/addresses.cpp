#include "addresses.h"

#include <charconv>
#include <cstdlib>
#include <vector>

namespace tollvane::soundlog {
namespace {

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(separator, at), text.size());
    if (end > at) parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

std::optional<std::string> firstOf(const Environment& environment, std::initializer_list<const char*> names) {
  for (const char* name : names) {
    if (auto value = environment(name); value && !value->empty()) return value;
  }
  return std::nullopt;
}

// Values in addresses of the bus escape bytes as "%2f".
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

std::optional<std::filesystem::path> busPath(std::string_view address) {
  constexpr std::string_view kUnix = "unix:";
  if (!address.starts_with(kUnix)) return std::nullopt;
  for (const std::string_view pair : split(address.substr(kUnix.size()), ',')) {
    constexpr std::string_view kPath = "path=";
    if (pair.starts_with(kPath)) return std::filesystem::path(unescaped(pair.substr(kPath.size())));
  }
  return std::nullopt;
}

std::string withoutInstance(std::string_view address) {
  std::string result;
  for (const std::string_view pair : split(address, ',')) {
    if (pair.starts_with("guid=")) continue;
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
    for (std::string_view server : split(*servers, ' ')) {
      // "{machine}unix:/path": only for the machine that bears this id.
      if (server.starts_with('{')) server.remove_prefix(std::min(server.find('}'), server.size() - 1) + 1);
      constexpr std::string_view kUnix = "unix:";
      if (server.starts_with(kUnix)) server.remove_prefix(kUnix.size());
      if (server.starts_with('/')) return std::filesystem::path(server);
    }
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
  for (const std::string_view address : split(*addresses, ';')) {
    if (!bus.address.empty()) bus.address += ';';
    bus.address += withoutInstance(address);
    if (!bus.socket) bus.socket = busPath(address);
  }
  return bus;
}

}  // namespace tollvane::soundlog
