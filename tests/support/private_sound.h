// A sound server and a session bus of a test's own: PipeWire with WirePlumber, its PulseAudio side and a null output
// that it makes by itself, or a PulseAudio server.
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
  // Nothing runs yet. `more`: options of private_session besides.
  explicit PrivateSound(std::vector<std::string> more = {});

  // What runs already is left alone.
  void start();  // bus and PipeWire, ready to play
  void startBus();
  void killBus();  // as a crash would: its socket stays

  void startPipeWire();  // needs the bus
  void stopPipeWire();
  void killPipeWire();  // as a crash would

  // A PulseAudio server instead of PipeWire; `more` of the constructor may say where it is.
  void startPulseAudio();
  void killPulseAudio();  // as a crash would

  // As for a test that begins: an empty home for its programs, the variables as at the start, and no PulseAudio.
  void renew();

  void tell(const std::string& command) { session_.tell(command); }

  // Runs a player to its end, and is true when it said that it played.
  bool play(const std::vector<std::string>& command) const;

  std::unique_ptr<Process> begin(const std::vector<std::string>& command,
                                 Process::Output output = Process::Output::ignored) const;

  // A sound file of this length: a quiet tone.
  std::filesystem::path tone(std::chrono::milliseconds length) const;

  // The environment in which programs find all this.
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
