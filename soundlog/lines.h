// What TollvaneLog prints: one line for each Happening, as JSON for a program or as text for a person. Pure functions,
// any thread. This is the only place where names from outside (of processes and applications) are made harmless:
// whatever name a program gives itself, it can forge neither another line, nor another process, nor another kind.
//
// JSON lines: RFC 8259, one object per line, always valid UTF-8. A reader needs two keys:
//   processImagePath  the sender; its last component tells the kind (audiomxd, systemsoundserverd, usernoted;
//   TollvaneLog
//                     itself tells of the sound server)
//   eventMessage      the message
// Of a sound that is no notification's, two more tell about its maker:
//   makerName         its name, with the script that started it ("paplay (backup-done.sh)")
//   ancestors         the numbers of the processes that started it, the nearest first; left out if there are none
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/process_table.h"

namespace tollvane::soundlog {

enum class Kind {
  outputStarted,          // a process began to play
  alertRequested,         // a process played a short signal sound (a bell, a dialog)
  notificationSound,      // the notification service played a sound
  notificationPresented,  // an application showed a notification
  serverMissing,          // there is no sound server, so no sound can be noticed
  serverFound,            // there is one again
};

struct Happening {
  Kind kind = Kind::outputStarted;
  // The process's name; for notificationPresented the application's identity; not used for the kinds without either.
  std::string name;
  Pid pid = 0;                      // 0 if unknown; not used for notificationPresented
  std::vector<Pid> ancestors = {};  // of the process, the nearest first
  std::string script = {};          // the script that started the process; empty if none did
};

// The longest name or identity that a line carries, in bytes.
inline constexpr std::size_t longestName = 256;

// `text` as valid UTF-8 on one line: invalid bytes become U+FFFD, control characters and line separators become blanks,
// double quotes become single quotes; no blanks at either end; at most longestName bytes, cut between characters.
std::string plainText(std::string_view text);

// `name` as plainText() returns it, with brackets instead of parentheses, and with "_" in front if it would begin with
// a word that marks a message of the system itself.
std::string processName(std::string_view name);

// `name` as processName() returns it, and `script` likewise in parentheses if there is one: "paplay (backup-done.sh)".
std::string makerName(std::string_view name, std::string_view script);

std::string_view processImagePath(Kind kind);
std::string eventMessage(const Happening& happening);

// One line with its line feed. Shorter than 4096 bytes, so that a pipe accepts it in one piece.
std::string ndjsonLine(const Happening& happening, TimePoint time);
std::string readableLine(const Happening& happening, TimePoint time);

}  // namespace tollvane::soundlog
