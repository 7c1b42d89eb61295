// What a log message says about a sound. Pure: takes a process name and a message, and returns at most one finding.
//
// Three daemons report sounds: "audiomxd" (a process's audio output started), "systemsoundserverd" (a process, or the
// notification centre, asked for a short sound) and "usernoted" (a notification was presented). Their messages have the
// form of the system log. "TollvaneLog", which is the log tool on Linux, also reports whether there is a sound server.
// Any thread. The time is linear in the length of the message.
#pragma once

#include <optional>
#include <string_view>
#include <variant>

#include "platform/process_table.h"

namespace tollvane {

// All texts are parts of the message in which they were found, and valid as long as it is.
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

struct SoundServerReport {
  bool found;  // false: there is none, so no sound can be noticed
  bool operator==(const SoundServerReport&) const = default;
};

using SoundMessage = std::variant<NotificationPresented, NotificationSoundRequested, AlertSoundRequested,
                                  AudioOutputStarted, SoundServerReport>;

// Absent for every message that is not one of these.
std::optional<SoundMessage> soundMessage(std::string_view process, std::string_view message);

// Whether a JSON text may hold such a message: if false, it certainly holds none. Far cheaper than reading the JSON.
bool mayHoldSoundMessage(std::string_view jsonText);

}  // namespace tollvane
