#include "detect/sound_message.h"

#include <re2/re2.h>

#include <charconv>

namespace tollvane {
namespace {

// The sound daemons cut process names to 16 characters; so do these prefixes, and they must stay so.
constexpr std::string_view notificationCenter = "NotificationCent";
constexpr std::string_view notificationDaemon = "usernoted";
constexpr std::string_view soundServer = "systemsoundserve";

// \p{Nd}: a digit of the patterns is any decimal digit of Unicode. The conversion that follows takes ASCII only, so
// a process id in other digits makes its line ignored, not some later match found.
struct Patterns {
  RE2 record{R"re(NotificationRecord app:"([^"]+)")re"};
  RE2 bundle{R"re(bundle=([^\],]+))re"};
  RE2 client{R"re(inClientPID (\p{Nd}+)\(([^)]*)\))re"};
  RE2 output{R"re("name":"([^"]*)\((\p{Nd}+)\)")re"};
};

const Patterns& patterns() {
  static const Patterns compiled;
  return compiled;
}

std::string_view view(re2::StringPiece piece) { return {piece.data(), piece.size()}; }

std::optional<Pid> pidOf(re2::StringPiece digits) {
  Pid pid = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, pid);
  return error == std::errc() && stop == end ? std::optional(pid) : std::nullopt;
}

std::optional<SoundMessage> notification(std::string_view message) {
  re2::StringPiece bundleID;
  if (!RE2::PartialMatch(message, patterns().record, &bundleID) &&
      !RE2::PartialMatch(message, patterns().bundle, &bundleID))
    return std::nullopt;
  return NotificationPresented{view(bundleID)};
}

std::optional<SoundMessage> soundRequest(std::string_view message) {
  re2::StringPiece digits;
  re2::StringPiece piece;
  if (!RE2::PartialMatch(message, patterns().client, &digits, &piece)) return std::nullopt;
  const auto pid = pidOf(digits);
  if (!pid) return std::nullopt;
  const std::string_view name = view(piece);
  if (name.starts_with(notificationCenter) || name.starts_with(notificationDaemon)) return NotificationSoundRequested{};
  return AlertSoundRequested{*pid, name};
}

std::optional<SoundMessage> outputStart(std::string_view message) {
  if (message.find(R"("output_running":true)") == std::string_view::npos) return std::nullopt;
  re2::StringPiece piece;
  re2::StringPiece digits;
  if (!RE2::PartialMatch(message, patterns().output, &piece, &digits)) return std::nullopt;
  const auto pid = pidOf(digits);
  const std::string_view name = view(piece);
  // The sound server's own output is the alert or notification that it was asked for: counted there, not twice.
  if (!pid || name.starts_with(soundServer)) return std::nullopt;
  return AudioOutputStarted{*pid, name};
}

// What each pattern above cannot do without, as it stands in a JSON text (a quote of the message is escaped there), and
// the character of it that log lines hold least often: looking for that one alone is the fastest way past a line.
struct Needle {
  std::string_view text;
  char rarest;
};
constexpr Needle needles[] = {
    {R"(\"output_running\":true)", '_'},
    {"inClientPID ", 'P'},
    {"NotificationRecord app:", 'N'},
    {"bundle=", '='},
};

bool holds(std::string_view text, const Needle& needle) {
  const std::size_t offset = needle.text.find(needle.rarest);
  for (auto at = text.find(needle.rarest, offset); at != text.npos; at = text.find(needle.rarest, at + 1))
    if (text.substr(at - offset, needle.text.size()) == needle.text) return true;
  return false;
}

// By which a JSON text may spell any character. A loop that compilers turn into vector instructions.
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
  for (const Needle& needle : needles)
    if (holds(jsonText, needle)) return true;
  return holdsUnicodeEscape(jsonText);
}

std::optional<SoundMessage> soundMessage(std::string_view process, std::string_view message) {
  if (process == "usernoted") return notification(message);
  if (process == "systemsoundserverd") return soundRequest(message);
  if (process == "audiomxd") return outputStart(message);
  return std::nullopt;
}

}  // namespace tollvane
