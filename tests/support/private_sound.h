// A sound server and a session bus of a test's own: PipeWire with WirePlumber, its PulseAudio side and a null output
// that it makes by itself. Nothing of it touches the user's, and nothing of it outlives the object.
//
//   PrivateSound sound;
//   sound.start();
//   sound.play({"pw-play", sound.tone(std::chrono::milliseconds(200))});
//
// One thread. Methods throw std::runtime_error, with what the programs said, when a part does not come up.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/process.h"

namespace tollvane::test {

class PrivateSound {
 public:
  PrivateSound();  // only the directories; nothing runs
  ~PrivateSound();
  PrivateSound(const PrivateSound&) = delete;
  PrivateSound& operator=(const PrivateSound&) = delete;

  // Bus and PipeWire, ready to play.
  void start();

  void startBus();
  void killBus();  // as a crash would: its socket stays

  void startPipeWire();  // needs the bus
  void stopPipeWire();
  void killPipeWire();  // as a crash would

  // A PulseAudio server instead of PipeWire; `installation` is where its package was unpacked.
  void startPulseAudio(const std::filesystem::path& installation);
  void killPulseAudio();  // as a crash would

  // Runs a player to its end, and is true when it said that it played.
  bool play(const std::vector<std::string>& command) const;

  std::unique_ptr<Process> begin(const std::vector<std::string>& command,
                                 Process::Output output = Process::Output::ignored) const;

  // A sound file of this length: a quiet tone.
  std::filesystem::path tone(std::chrono::milliseconds length) const;

  // The environment in which programs find all this.
  const Variables& variables() const { return variables_; }
  void setVariable(const std::string& name, const std::string& value) { variables_[name] = value; }

  const std::filesystem::path& directory() const { return directory_; }
  pid_t pipeWirePid() const { return pipeWire_->pid(); }

 private:
  void configureSessionManager() const;
  std::unique_ptr<Process> launch(const std::vector<std::string>& command) const;
  [[noreturn]] void fail(const std::string& what) const;
  void awaitPlaying() const;

  std::filesystem::path directory_;
  Variables variables_;
  std::unique_ptr<Process> bus_;
  std::unique_ptr<Process> pipeWire_;
  std::unique_ptr<Process> sessionManager_;
  std::unique_ptr<Process> pulse_;
};

}  // namespace tollvane::test
