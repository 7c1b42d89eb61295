// A private sound server and session bus for a test. The server is PipeWire with WirePlumber, PipeWire's PulseAudio
// server and a null output, or it is PulseAudio.
//
//   PrivateSound sound;
//   sound.start();
//   sound.play({"pw-play", sound.tone(std::chrono::milliseconds(200))});
//
// See PrivateSession for threads, failures and the end.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/private_session.h"
#include "tests/support/process.h"

namespace tollvane::test {

class PrivateSound {
 public:
  // Starts nothing yet. `more`: further options of private_session.
  explicit PrivateSound(std::vector<std::string> more = {});

  // The start methods leave parts alone that run already.
  void start();  // bus and PipeWire, ready to play
  void startBus();
  void killBus();  // like a crash: its socket stays

  void startPipeWire();  // needs the bus
  void stopPipeWire();
  void killPipeWire();  // like a crash

  // Starts PulseAudio instead of PipeWire. The constructor's `more` may say where it is installed.
  void startPulseAudio();
  void killPulseAudio();  // like a crash

  // Prepares the session for the next test: an empty home for its programs, the variables as at the start, no
  // PulseAudio.
  void renew();

  void tell(const std::string& command) { session_.tell(command); }

  // Runs a player to its end; true if it succeeded.
  bool play(const std::vector<std::string>& command) const;

  std::unique_ptr<Process> begin(const std::vector<std::string>& command,
                                 Process::Output output = Process::Output::ignored) const;

  // Makes a sound file of this length with a quiet tone.
  std::filesystem::path tone(std::chrono::milliseconds length) const;

  // The environment that lets programs find the server and the bus.
  const Variables& variables() const { return session_.variables(); }
  void setVariable(const std::string& name, const std::string& value) { session_.setVariable(name, value); }

  std::filesystem::path home() const { return session_.home(); }
  std::filesystem::path runtimeDirectory() const { return session_.runtimeDirectory(); }
  pid_t pipeWirePid() const { return session_.pid("pipewire"); }

 private:
  bool hasBus_ = false;
  bool hasPipeWire_ = false;
  bool hasPulseAudio_ = false;
  PrivateSession session_;
};

}  // namespace tollvane::test
