#include "detect/sound_message.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <climits>

#include "support/ascii.h"

namespace tollvane {
namespace {

// The sound daemons cut process names to 16 characters, so these prefixes must not be longer.
constexpr std::string_view notificationCenter = "NotificationCent";
constexpr std::string_view notificationDaemon = "usernoted";
constexpr std::string_view soundServer = "systemsoundserve";

// The patterns below are regular expressions, matched by hand: a message may have any length, and libraries for regular
// expressions are too slow if a capture is many megabytes long. Each search goes on behind the place that did not
// match.

bool isDigit(UChar32 c) { return c >= 0 && u_charType(c) == U_DECIMAL_DIGIT_NUMBER; }

// How many bytes at the beginning of `text` are decimal digits, in any of Unicode's scripts.
std::size_t leadingDigits(std::string_view text) {
  const auto length = static_cast<std::int32_t>(std::min<std::size_t>(text.size(), INT_MAX));
  std::int32_t end = 0;
  for (std::int32_t next = 0; next < length; end = next) {
    UChar32 c;
    U8_NEXT(text.data(), next, length, c);
    if (!isDigit(c)) break;
  }
  return static_cast<std::size_t>(end);
}

// The same at the end of `text`.
std::size_t trailingDigits(std::string_view text) {
  const auto length = static_cast<std::int32_t>(std::min<std::size_t>(text.size(), INT_MAX));
  std::int32_t begin = length;
  for (std::int32_t next = length; next > 0; begin = next) {
    UChar32 c;
    U8_PREV(text.data(), 0, next, c);
    if (!isDigit(c)) break;
  }
  return static_cast<std::size_t>(length - begin);
}

// Only ASCII digits are read. If a process number has other digits, its line is ignored, even if a later part would
// match.
std::optional<Pid> pidOf(std::string_view digits) { return ascii::number<Pid>(digits); }

struct Client {
  std::string_view digits;
  std::string_view name;
};

// Calls `read` with the text behind each `start` until it finds something there, and returns that.
template <typename Read>
auto firstBehind(std::string_view message, std::string_view start, Read read) -> decltype(read(message)) {
  for (auto at = message.find(start); at != message.npos; at = message.find(start, at + 1))
    if (auto found = read(message.substr(at + start.size()))) return found;
  return std::nullopt;
}

// NotificationRecord app:"([^"]+)"
std::optional<std::string_view> recordBundle(std::string_view message) {
  return firstBehind(message, "NotificationRecord app:\"",
                     [](std::string_view rest) -> std::optional<std::string_view> {
                       const auto end = rest.find('"');
                       return end == rest.npos || end == 0 ? std::nullopt : std::optional(rest.substr(0, end));
                     });
}

// bundle=([^\],]+)
std::optional<std::string_view> requestBundle(std::string_view message) {
  return firstBehind(message, "bundle=", [](std::string_view rest) -> std::optional<std::string_view> {
    const auto bundle = rest.substr(0, rest.find_first_of("],"));
    return bundle.empty() ? std::nullopt : std::optional(bundle);
  });
}

// inClientPID (\d+)\(([^)]*)\)
std::optional<Client> requestClient(std::string_view message) {
  message = message.substr(0, message.rfind(')') + 1);  // a match cannot end behind the last ')'
  return firstBehind(message, "inClientPID ", [](std::string_view rest) -> std::optional<Client> {
    const auto digits = rest.substr(0, leadingDigits(rest));
    rest.remove_prefix(digits.size());
    if (digits.empty() || !rest.starts_with('(')) return std::nullopt;
    return Client{digits, rest.substr(1, rest.find(')') - 1)};
  });
}

// "name":"([^"]*)\((\d+)\)"
std::optional<Client> outputClient(std::string_view message) {
  return firstBehind(message, "\"name\":\"", [](std::string_view rest) -> std::optional<Client> {
    auto text = rest.substr(0, rest.find('"'));
    if (text.size() == rest.size() || !text.ends_with(')')) return std::nullopt;
    text.remove_suffix(1);
    const auto digits = text.substr(text.size() - trailingDigits(text));
    text.remove_suffix(digits.size());
    if (digits.empty() || !text.ends_with('(')) return std::nullopt;
    text.remove_suffix(1);
    return Client{digits, text};
  });
}

std::optional<SoundMessage> notification(std::string_view message) {
  auto bundleID = recordBundle(message);
  if (!bundleID) bundleID = requestBundle(message);
  if (!bundleID) return std::nullopt;
  return NotificationPresented{*bundleID};
}

std::optional<SoundMessage> soundRequest(std::string_view message) {
  const auto client = requestClient(message);
  const auto pid = client ? pidOf(client->digits) : std::nullopt;
  if (!pid) return std::nullopt;
  if (client->name.starts_with(notificationCenter) || client->name.starts_with(notificationDaemon))
    return NotificationSoundRequested{};
  return AlertSoundRequested{*pid, client->name};
}

std::optional<SoundMessage> outputStart(std::string_view message) {
  if (message.find(R"("output_running":true)") == std::string_view::npos) return std::nullopt;
  const auto client = outputClient(message);
  const auto pid = client ? pidOf(client->digits) : std::nullopt;
  // The sound server's own output is the alert or notification that it was asked for, which is counted already.
  if (!pid || client->name.starts_with(soundServer)) return std::nullopt;
  return AudioOutputStarted{*pid, client->name};
}

std::optional<SoundMessage> serverReport(std::string_view message) {
  if (message == "sound_server=missing") return SoundServerReport{false};
  if (message == "sound_server=found") return SoundServerReport{true};
  return std::nullopt;
}

// For each pattern above: a text that it must contain, as it stands in JSON (where the quotes of a message are
// escaped), and the character of this text that log lines hold least often. Searching for this character alone is the
// fastest way.
struct Needle {
  constexpr Needle(std::string_view needle, char character)
      : text(needle), rarest(character), offset(needle.find(character)) {}

  bool isAround(std::string_view line, std::size_t at) const {
    return offset <= at && line.substr(at - offset, text.size()) == text;
  }

  std::string_view text;
  char rarest;
  std::size_t offset;  // of the rarest character
};
constexpr Needle outputNeedle(R"(\"output_running\":true)", '_');
constexpr Needle requestNeedle("inClientPID ", 'P');
constexpr Needle recordNeedle("NotificationRecord app:", 'N');
constexpr Needle bundleNeedle("bundle=", '=');
constexpr Needle serverNeedle("sound_server=", '=');

// Needles with the same rarest character share a search.
template <typename... Needles>
bool holds(std::string_view line, const Needle& needle, const Needles&... others) {
  for (auto at = line.find(needle.rarest); at != line.npos; at = line.find(needle.rarest, at + 1))
    if (needle.isAround(line, at) || (others.isAround(line, at) || ...)) return true;
  return false;
}

// JSON may write any character as such an escape. Compilers turn this loop into vector instructions.
bool holdsUnicodeEscape(std::string_view text) {
  unsigned found = 0;
  for (std::size_t i = 1; i < text.size(); ++i) {
    const unsigned isBackslash = text[i - 1] == '\\';
    const unsigned isU = text[i] == 'u';
    found |= isBackslash & isU;
  }
  return found != 0;
}

}  // namespace

bool mayHoldSoundMessage(std::string_view jsonText) {
  return holds(jsonText, outputNeedle) || holds(jsonText, requestNeedle) || holds(jsonText, recordNeedle) ||
         holds(jsonText, bundleNeedle, serverNeedle) || holdsUnicodeEscape(jsonText);
}

std::optional<SoundMessage> soundMessage(std::string_view process, std::string_view message) {
  if (process == "usernoted") return notification(message);
  if (process == "systemsoundserverd") return soundRequest(message);
  if (process == "audiomxd") return outputStart(message);
  if (process == "TollvaneLog") return serverReport(message);
  return std::nullopt;
}

}  // namespace tollvane
