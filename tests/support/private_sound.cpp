#include "tests/support/private_sound.h"

#include <cmath>
#include <cstdint>
#include <fstream>
#include <numbers>

namespace tollvane::test {
namespace {

void append(std::string& bytes, std::uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i));
}

// RIFF WAVE, 16 bit, mono.
std::string waveFile(std::chrono::milliseconds length) {
  constexpr std::uint32_t rate = 48000;
  const auto samples = static_cast<std::uint32_t>(length.count() * rate / 1000);
  std::string bytes = "RIFF";
  append(bytes, 36 + 2 * samples, 4);
  bytes += "WAVEfmt ";
  append(bytes, 16, 4);
  append(bytes, 1, 2);
  append(bytes, 1, 2);
  append(bytes, rate, 4);
  append(bytes, 2 * rate, 4);
  append(bytes, 2, 2);
  append(bytes, 16, 2);
  bytes += "data";
  append(bytes, 2 * samples, 4);
  for (std::uint32_t i = 0; i < samples; ++i) {
    const double value = 1000 * std::sin(2 * std::numbers::pi * 440 * i / rate);
    append(bytes, static_cast<std::uint16_t>(static_cast<std::int16_t>(value)), 2);
  }
  return bytes;
}

std::vector<std::string> withoutBus(std::vector<std::string> more) {
  more.push_back("--without-bus");
  return more;
}

}  // namespace

PrivateSound::PrivateSound(std::vector<std::string> more) : session_(withoutBus(std::move(more))) {}

void PrivateSound::start() {
  startBus();
  startPipeWire();
}

void PrivateSound::startBus() {
  if (hasBus_) return;
  session_.tell("start bus");
  hasBus_ = true;
}

void PrivateSound::killBus() {
  session_.tell("kill bus");
  hasBus_ = false;
}

void PrivateSound::startPipeWire() {
  if (hasPipeWire_) return;
  session_.tell("start pipewire");
  hasPipeWire_ = true;
}

void PrivateSound::stopPipeWire() {
  if (!hasPipeWire_) return;
  session_.tell("stop pipewire");
  hasPipeWire_ = false;
}

void PrivateSound::killPipeWire() {
  session_.tell("kill pipewire");
  hasPipeWire_ = false;
}

void PrivateSound::startPulseAudio() {
  if (hasPulseAudio_) return;
  session_.tell("start pulseaudio");
  hasPulseAudio_ = true;
}

void PrivateSound::killPulseAudio() {
  session_.tell("kill pulseaudio");
  hasPulseAudio_ = false;
}

void PrivateSound::renew() {
  if (hasPulseAudio_) killPulseAudio();
  session_.renew();
}

bool PrivateSound::play(const std::vector<std::string>& command) const { return begin(command)->exitCode() == 0; }

std::unique_ptr<Process> PrivateSound::begin(const std::vector<std::string>& command, Process::Output output) const {
  return session_.start(command, Process::Input::inherited, output);
}

std::filesystem::path PrivateSound::tone(std::chrono::milliseconds length) const {
  auto file = session_.root() / ("tone-" + std::to_string(length.count()) + "ms.wav");
  if (!std::filesystem::exists(file)) std::ofstream(file, std::ios::binary) << waveFile(length);
  return file;
}

}  // namespace tollvane::test
