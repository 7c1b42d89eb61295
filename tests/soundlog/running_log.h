// TollvaneLog as its application runs it, beside a private sound server: started as a child, read line by line.
// Used from one thread.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/private_sound.h"

namespace tollvane::test {

// A line as a reader understands it.
struct Heard {
  std::string speaker;              // the last component of processImagePath
  std::string name;                 // of the process, or the notification's application
  int pid = -1;                     // -1 for a notification
  std::vector<int> ancestors = {};  // of the process, the nearest first; not compared

  bool operator==(const Heard& other) const {
    return speaker == other.speaker && name == other.name && pid == other.pid;
  }
};
std::ostream& operator<<(std::ostream& out, const Heard& heard);

// Absent when it is no line that a reader understands.
std::optional<Heard> understood(const std::string& line);

// Reads without a pause, as Tollvane does: TollvaneLog credits a sound to those who live when its line is taken.
class RunningLog {
 public:
  explicit RunningLog(const PrivateSound& sound);
  ~RunningLog() { stopReading(); }

  // Plays short sounds until one is heard: from then on nothing is missed. False when none is heard in time.
  bool listens();

  // The same for notifications.
  bool seesNotifications();

  // The next thing heard that was no probe of listens() or seesNotifications(). Absent after the deadline.
  std::optional<Heard> next(std::chrono::milliseconds deadline = patience);

  // Everything heard before a marker that is played now, the marker not included.
  std::vector<Heard> heardSoFar();

  // From now on nobody reads.
  void closeOutput();

  Process& process() { return *process_; }

 private:
  bool isProbe(const Heard& heard) const;
  std::optional<Heard> nextOfAll(std::chrono::milliseconds deadline);
  void read();
  void stopReading();

  const PrivateSound& sound_;
  std::unique_ptr<Process> process_;
  std::vector<int> probes_;
  std::deque<Heard> kept_;  // heard while probing
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<std::string> lines_;  // guarded by the mutex
  std::atomic<bool> reading_ = true;
  std::thread reader_;
};

// Calls Notify on the session bus, as any program does that uses no library for it. `hints` as busctl writes them:
// the count, then name, type and value of each.
bool notify(const PrivateSound& sound, const std::string& applicationName, const std::vector<std::string>& hints);

}  // namespace tollvane::test
