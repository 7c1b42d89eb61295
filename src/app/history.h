// The history file: every sound that was ever recorded, one line each, oldest first. Lines are only added; the file is
// never read, trimmed or rotated. A file that cannot be opened for writing is set aside under another name, and a new
// one begins. A line that cannot be written is silently lost, and never half written. Main thread only.
#pragma once

#include "model/paths.h"
#include "model/sound_event.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace tollvane {

class History {
 public:
  History(const Paths& paths, Files& files, const DateFormatter& dates) : paths_(paths), files_(files), dates_(dates) {}

  // Writes date and time, application, kind and tab label with tabs between them, and a line feed. Texts are not
  // escaped.
  void append(const SoundEvent& event);

 private:
  bool setAside(const std::filesystem::path& file);

  const Paths& paths_;
  Files& files_;
  const DateFormatter& dates_;
};

}  // namespace tollvane
