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

}  // namespace

std::optional<SoundMessage> soundMessage(std::string_view process, std::string_view message) {
  if (process == "usernoted") return notification(message);
  if (process == "systemsoundserverd") return soundRequest(message);
  if (process == "audiomxd") return outputStart(message);
  return std::nullopt;
}

}  // namespace tollvane
