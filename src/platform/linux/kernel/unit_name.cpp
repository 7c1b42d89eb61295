#include "platform/linux/kernel/unit_name.h"

#include <algorithm>
#include <charconv>

namespace tollvane {

namespace {

// "a\x2db" -> "a-b"
std::string unescaped(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned value = 0;
    if (text.substr(i).starts_with("\\x") && i + 3 < text.size()) {
      const char* const digits = text.data() + i + 2;
      if (std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2 && value != 0) {
        result += static_cast<char>(value);
        i += 3;
        continue;
      }
    }
    result += text[i];
  }
  return result;
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

bool takeSuffix(std::string_view& text, std::string_view suffix) {
  if (!text.ends_with(suffix)) return false;
  text.remove_suffix(suffix.size());
  return true;
}

// Removes "8-4-4-4-12" hexadecimal digits from the end, with the separator in front of them.
bool takeUuid(std::string_view& text) {
  constexpr std::size_t length = 36;
  if (text.size() <= length + 1) return false;
  const char separator = text[text.size() - length - 1];
  const std::string_view uuid = text.substr(text.size() - length);
  if (separator != '-' && separator != '.') return false;
  if (uuid.find_first_not_of("0123456789abcdefABCDEF-") != std::string_view::npos || uuid[8] != '-') return false;
  text.remove_suffix(length + 1);
  return true;
}

void addId(UnitName& unit, std::string_view id) {
  std::string plain = unescaped(id);
  if (!plain.empty() && std::find(unit.desktopIds.begin(), unit.desktopIds.end(), plain) == unit.desktopIds.end())
    unit.desktopIds.push_back(std::move(plain));
}

// Adds the id with and without a launcher in front.
void addIds(UnitName& unit, std::string_view name) {
  addId(unit, name);
  if (const auto dash = name.find('-'); dash != std::string_view::npos) addId(unit, name.substr(dash + 1));
}

std::string_view withoutRandom(std::string_view name) { return name.substr(0, name.rfind('-')); }

// snap.NAME.APPLICATION-UUID.scope, snap.NAME.APPLICATION.service; a snap's hooks are no applications
bool readSnap(std::string_view name, UnitName& unit) {
  takeUuid(name);
  const auto dot = name.find('.');
  if (dot == std::string_view::npos || dot == 0 || name.substr(dot + 1).starts_with("hook.")) return false;
  unit.snapInstance = unescaped(name.substr(0, dot));
  unit.snapApplication = unescaped(name.substr(dot + 1));
  return true;
}

void readService(std::string_view name, UnitName& unit) {
  const auto at = name.rfind('@');
  addIds(unit, name.substr(0, at));
  // Before templates were agreed on, the random part of a service's name stood after a dash.
  if (at == std::string_view::npos && name.find('-') != std::string_view::npos) addIds(unit, withoutRandom(name));
}

bool read(std::string_view name, UnitName& unit) {
  const bool scope = takeSuffix(name, ".scope");
  if (!scope && !takeSuffix(name, ".service")) return false;
  if (takePrefix(name, "snap.")) return readSnap(name, unit);
  if (takePrefix(name, "app-flatpak-")) {
    unit.flatpakId = unescaped(scope ? withoutRandom(name) : name.substr(0, name.rfind('@')));
    return !unit.flatpakId.empty();
  }
  if (takePrefix(name, "dbus-:")) {
    // For example "dbus-:1.2-org.example.Player@0.service".
    const auto dash = name.find('-');
    if (dash != std::string_view::npos) addId(unit, name.substr(dash + 1, name.rfind('@') - dash - 1));
  } else if (takePrefix(name, "app-")) {
    if (scope) {
      addIds(unit, withoutRandom(name));
    } else {
      readService(name, unit);
    }
  }
  return !unit.desktopIds.empty();
}

// Removes the last component of `path` and returns it.
std::string_view takeComponent(std::string_view& path) {
  const auto slash = path.rfind('/');
  const std::string_view component = slash == std::string_view::npos ? path : path.substr(slash + 1);
  path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
  return component;
}

// Recognises an application's own service: "…/app-org.example.Terminal.slice/example-terminal-server.service". What it
// starts has scopes of its own beside it.
bool readOwnService(std::string_view cgroup, UnitName& unit) {
  if (!takeComponent(cgroup).ends_with(".service")) return false;
  std::string_view slice = takeComponent(cgroup);
  if (!takePrefix(slice, "app-") || !takeSuffix(slice, ".slice")) return false;
  addId(unit, slice);
  unit.isOwnService = !unit.desktopIds.empty();
  return unit.isOwnService;
}

}  // namespace

UnitName applicationUnit(std::string_view cgroup) {
  if (UnitName unit; readOwnService(cgroup, unit)) return unit;
  while (!cgroup.empty()) {
    const std::string_view component = takeComponent(cgroup);
    UnitName unit;
    if (read(component, unit)) return unit;
  }
  return {};
}

}  // namespace tollvane
