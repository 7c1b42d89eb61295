#include "soundlog/lines.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "support/ascii.h"
#include "support/text.h"

namespace tollvane::soundlog {
namespace {

struct Voice {
  Kind kind;
  std::string_view path;
  std::string_view title;
};

// These paths name roles; there are no such files. A reader tells the senders apart by the last component.
constexpr std::array voices = {
    Voice{Kind::outputStarted, "/tollvane/audiomxd", "sound"},
    Voice{Kind::alertRequested, "/tollvane/systemsoundserverd", "alert"},
    Voice{Kind::notificationSound, "/tollvane/systemsoundserverd", "notification sound"},
    Voice{Kind::notificationPresented, "/tollvane/usernoted", "notification"},
    Voice{Kind::serverMissing, "/tollvane/TollvaneLog", "no sound server"},
    Voice{Kind::serverFound, "/tollvane/TollvaneLog", "sound server found"},
};

// A name that begins with one of these would be mistaken for the system's own.
constexpr std::array<std::string_view, 3> reserved = {"notificationcent", "usernoted", "systemsoundserve"};

constexpr std::string_view notificationService = "NotificationCenter";
constexpr std::string_view unknown = "Unknown app";

const Voice& voice(Kind kind) {
  return *std::find_if(voices.begin(), voices.end(), [kind](const Voice& each) { return each.kind == kind; });
}

std::int32_t harmless(std::int32_t character) {
  if (text::isControl(static_cast<char32_t>(character))) return ' ';
  return character == '"' ? '\'' : character;
}

bool beginsWithReserved(std::string_view name) {
  return std::any_of(reserved.begin(), reserved.end(),
                     [&](std::string_view word) { return ascii::startsWithIgnoringCase(name, word); });
}

struct LocalTime {
  std::string date, clock, zone;
};

LocalTime localTime(TimePoint time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts{};
  localtime_r(&seconds, &parts);
  std::array<char, 64> text{};
  const std::size_t size = std::strftime(text.data(), text.size(), "%F %T%z", &parts);
  const std::string_view all(text.data(), size);
  const std::size_t blank = all.find(' ');
  if (blank == std::string_view::npos) return {};
  const std::string_view rest = all.substr(blank + 1);
  return {std::string(all.substr(0, blank)), std::string(rest.substr(0, 8)),
          std::string(rest.substr(std::min<std::size_t>(rest.size(), 8)))};
}

std::string timestamp(TimePoint time) {
  const auto since = std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count();
  std::array<char, 8> micros{};
  std::snprintf(micros.data(), micros.size(), ".%06u", static_cast<unsigned>(since % 1'000'000));
  const LocalTime local = localTime(time);
  return local.date + ' ' + local.clock + micros.data() + local.zone;
}

std::string identity(const Happening& happening) {
  std::string text = plainText(happening.name);
  return text.empty() ? std::string(unknown) : text;
}

}  // namespace

std::string plainText(std::string_view text) {
  std::string result;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  // Enough bytes to fill the result, because a character has at most four. The rest of a longer text is not read.
  const std::size_t length = std::min(text.size(), 8 * longestName);
  for (std::size_t at = 0; at < length;) {
    std::int32_t character = 0;
    U8_NEXT_OR_FFFD(bytes, at, length, character);
    character = harmless(character);
    if (result.empty() && character == ' ') continue;
    std::array<std::uint8_t, 4> encoded{};
    std::size_t size = 0;
    U8_APPEND_UNSAFE(encoded.data(), size, character);
    if (result.size() + size > longestName) break;
    result.append(encoded.begin(), encoded.begin() + static_cast<std::ptrdiff_t>(size));
  }
  while (!result.empty() && result.back() == ' ') result.pop_back();
  return result;
}

std::string processName(std::string_view name) {
  std::string text = plainText(name);
  std::replace(text.begin(), text.end(), '(', '[');
  std::replace(text.begin(), text.end(), ')', ']');
  return beginsWithReserved(text) ? plainText("_" + text) : text;
}

std::string makerName(std::string_view name, std::string_view script) {
  std::string text = processName(name);
  const std::string by = processName(script);
  if (!text.empty() && !by.empty()) text += " (" + by + ")";
  return text;
}

std::string_view processImagePath(Kind kind) { return voice(kind).path; }

std::string eventMessage(const Happening& happening) {
  const std::string pid = std::to_string(happening.pid);
  switch (happening.kind) {
    case Kind::outputStarted:
      return "update_running_state {\"name\":\"" + processName(happening.name) + "(" + pid +
             ")\",\"output_running\":true}";
    case Kind::alertRequested:
      return "Incoming Request: inClientPID " + pid + "(" + processName(happening.name) + ")";
    case Kind::notificationSound:
      return "Incoming Request: inClientPID " + pid + "(" + std::string(notificationService) + ")";
    case Kind::notificationPresented:
      return "Presenting <NotificationRecord app:\"" + identity(happening) + "\">";
    case Kind::serverMissing:
      return "sound_server=missing";
    case Kind::serverFound:
      return "sound_server=found";
  }
  return {};
}

std::string ndjsonLine(const Happening& happening, TimePoint time) {
  nlohmann::json line = {
      {"eventMessage", eventMessage(happening)},
      {"processImagePath", processImagePath(happening.kind)},
      {"timestamp", timestamp(time)},
  };
  if (happening.kind == Kind::outputStarted || happening.kind == Kind::alertRequested) {
    line["makerName"] = makerName(happening.name, happening.script);
    if (!happening.ancestors.empty()) line["ancestors"] = happening.ancestors;
  }
  return line.dump() + '\n';
}

std::string readableLine(const Happening& happening, TimePoint time) {
  std::string line = localTime(time).clock + "  " + std::string(voice(happening.kind).title);
  if (happening.kind == Kind::serverMissing || happening.kind == Kind::serverFound) return line + '\n';
  if (happening.kind == Kind::notificationPresented) return line + "  " + identity(happening) + '\n';
  if (happening.kind != Kind::notificationSound) {
    const std::string name = makerName(happening.name, happening.script);
    line += "  " + (name.empty() ? std::string(unknown) : name);
  }
  return line + "  (" + (happening.pid == 0 ? "no process" : "pid " + std::to_string(happening.pid)) + ")\n";
}

}  // namespace tollvane::soundlog
