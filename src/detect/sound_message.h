// What a log message says of a sound. Pure: a process name and a message in, at most one finding out.
//
// Three daemons speak of sounds: "audiomxd" (some process's audio output started), "systemsoundserverd" (some process,
// or the notification centre, asked for a short sound) and "usernoted" (a notification was presented). The forms of
// their messages are those of the system log. Any thread. The time is linear in the length.
#pragma once

#include <optional>
#include <string_view>
#include <variant>

#include "platform/process_table.h"

namespace tollvane {

// All texts are parts of the message that they were found in.
struct NotificationPresented {
  std::string_view bundleID;
  bool operator==(const NotificationPresented&) const = default;
};
struct NotificationSoundRequested {
  bool operator==(const NotificationSoundRequested&) const = default;
};
struct AlertSoundRequested {
  Pid pid;
  std::string_view name;
  bool operator==(const AlertSoundRequested&) const = default;
};
struct AudioOutputStarted {
  Pid pid;
  std::string_view name;
  bool operator==(const AudioOutputStarted&) const = default;
};

using SoundMessage =
    std::variant<NotificationPresented, NotificationSoundRequested, AlertSoundRequested, AudioOutputStarted>;

// Absent for every message that is not one of the four.
std::optional<SoundMessage> soundMessage(std::string_view process, std::string_view message);

// Whether a JSON text can hold such a message at all. Never false for one that does; far cheaper than reading the JSON.
bool mayHoldSoundMessage(std::string_view jsonText);

}  // namespace tollvane
