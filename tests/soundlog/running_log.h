// TollvaneLog as Tollvane runs it: as a child process whose lines are read. It listens to a private sound server.
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
  std::string name;                 // of the process, or of the notification's application
  int pid = -1;                     // -1 for a notification
  std::vector<int> ancestors = {};  // of the process, the nearest first; not compared

  bool operator==(const Heard& other) const {
    return speaker == other.speaker && name == other.name && pid == other.pid;
  }
};
std::ostream& operator<<(std::ostream& out, const Heard& heard);

// Absent if a reader does not understand the line.
std::optional<Heard> understood(const std::string& line);

// A thread reads the lines without a pause, as Tollvane does, because TollvaneLog finds the maker of a sound among the
// processes that run when the line is read.
class RunningLog {
 public:
  explicit RunningLog(const PrivateSound& sound);
  ~RunningLog() { stopReading(); }

  // Plays short sounds until one is heard. From then on no sound is missed. False if no sound is heard in time.
  bool listens();

  // The same with notifications.
  bool seesNotifications();

  // The next sound or notification, without those that listens() and seesNotifications() made. Absent after the
  // deadline.
  std::optional<Heard> next(std::chrono::milliseconds deadline = patience);

  // Plays a sound as a marker, and returns everything heard before it.
  std::vector<Heard> heardSoFar();

  // Closes the reading end of the pipe.
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
  std::deque<Heard> kept_;  // heard while the methods above waited for something else
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<std::string> lines_;  // guarded by the mutex
  std::atomic<bool> reading_ = true;
  std::thread reader_;
};

// Calls Notify on the session bus directly, as a program without a notification library does. `hints` are written as
// for busctl: their count, then the name, type and value of each.
bool notify(const PrivateSound& sound, const std::string& applicationName, const std::vector<std::string>& hints);

}  // namespace tollvane::test
