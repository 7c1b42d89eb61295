#include "tests/support/private_sound.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>
#include <string_view>

namespace tollvane::test {
namespace {

// The smallest bus that a sound server needs. Starts no services: the machine's own must not come to life here.
constexpr std::string_view busConfiguration = R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus
 Configuration 1.0//EN" "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=@SOCKET@</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

bool connects(const std::filesystem::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool connected = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  close(descriptor);
  return connected;
}

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

// Where below `root` the file lies whose name begins so.
std::filesystem::path directoryOf(const std::filesystem::path& root, std::string_view name) {
  for (const auto& file : std::filesystem::recursive_directory_iterator(root)) {
    if (file.path().filename().string().starts_with(name)) return file.path().parent_path();
  }
  throw std::runtime_error("no " + std::string(name) + " in " + root.string());
}

}  // namespace

PrivateSound::PrivateSound() : variables_(ownVariables()) {
  std::string name = (std::filesystem::temp_directory_path() / "tollvane-sound-XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error("no directory for a private sound server");
  directory_ = name;
  for (const char* foreign : {"DISPLAY", "WAYLAND_DISPLAY", "PULSE_SERVER", "PULSE_RUNTIME_PATH", "PIPEWIRE_REMOTE",
                              "PIPEWIRE_RUNTIME_DIR"}) {
    variables_.erase(foreign);
  }
  variables_["XDG_RUNTIME_DIR"] = name;
  variables_["HOME"] = name;
  variables_["XDG_CONFIG_HOME"] = name + "/config";
  variables_["XDG_STATE_HOME"] = name + "/state";
  variables_["XDG_DATA_HOME"] = name + "/data";
  variables_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + name + "/bus";
}

PrivateSound::~PrivateSound() {
  stopPipeWire();
  bus_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

void PrivateSound::start() {
  startBus();
  startPipeWire();
}

void PrivateSound::startBus() {
  std::string configuration(busConfiguration);
  constexpr std::string_view placeholder = "@SOCKET@";
  configuration.replace(configuration.find(placeholder), placeholder.size(), directory_ / "bus");
  const auto file = directory_ / "bus.conf";
  std::ofstream(file) << configuration;
  bus_ = launch({"dbus-daemon", "--nofork", "--nopidfile", "--config-file=" + file.string()});
  if (!waitUntil([this] { return connects(directory_ / "bus"); })) fail("the bus did not start");
}

void PrivateSound::killBus() { bus_->kill(); }

void PrivateSound::startPipeWire() {
  pipeWire_ = launch({"pipewire"});
  if (!waitUntil([this] { return connects(std::filesystem::path(variables_.at("XDG_RUNTIME_DIR")) / "pipewire-0"); }))
    fail("PipeWire did not start");
  configureSessionManager();
  sessionManager_ = launch({"wireplumber"});
  // pipewire-pulse gives up where a player makes this directory at the same moment.
  const auto pulseDirectory = std::filesystem::path(variables_.at("XDG_RUNTIME_DIR")) / "pulse";
  std::filesystem::create_directory(pulseDirectory);
  std::filesystem::permissions(pulseDirectory, std::filesystem::perms::owner_all);
  pulse_ = launch({"pipewire-pulse"});
  awaitPlaying();
}

// WirePlumber ends where there is no login service, which it asks about Bluetooth only.
void PrivateSound::configureSessionManager() const {
  const auto directory = std::filesystem::path(variables_.at("XDG_CONFIG_HOME")) / "wireplumber" / "bluetooth.lua.d";
  std::filesystem::create_directories(directory);
  std::ofstream(directory / "51-no-bluetooth.lua") << "bluez_monitor.enabled = false\n";
}

void PrivateSound::stopPipeWire() {
  for (auto* each : {&pulse_, &sessionManager_, &pipeWire_}) each->reset();
}

void PrivateSound::killPipeWire() {
  for (auto* each : {&pipeWire_, &sessionManager_, &pulse_}) (*each)->kill();
  stopPipeWire();
}

void PrivateSound::startPulseAudio(const std::filesystem::path& installation) {
  const auto libraries = directoryOf(installation, "libpulsecore-");
  const auto modules = directoryOf(installation, "module-null-sink");
  Variables variables = variables_;
  variables["LD_LIBRARY_PATH"] = libraries.string() + ":" + libraries.parent_path().string() + ":" + modules.string();
  const std::vector<std::string> command = {(installation / "usr/bin/pulseaudio").string(),
                                            "--daemonize=no",
                                            "-n",
                                            "--exit-idle-time=-1",
                                            "--use-pid-file=no",
                                            "--dl-search-path=" + modules.string(),
                                            "-L",
                                            "module-native-protocol-unix auth-anonymous=1",
                                            "-L",
                                            "module-null-sink sink_name=null"};
  pulse_ =
      std::make_unique<Process>(command, Process::Options{.variables = variables, .errors = directory_ / "errors.log"});
  if (!waitUntil([this] { return run({"pactl", "info"}, variables_) == 0; })) fail("PulseAudio did not start");
}

void PrivateSound::killPulseAudio() {
  pulse_->kill();
  pulse_.reset();
}

// Listed outputs prove nothing: only one that plays is ready.
void PrivateSound::awaitPlaying() const {
  const auto sound = tone(std::chrono::milliseconds(10));
  const auto outputListed = [this] {
    const auto list = begin({"pactl", "list", "short", "sinks"}, Process::Output::read);
    return list->line().has_value();
  };
  const auto playing = [&] {
    constexpr std::chrono::milliseconds briefly{3000};
    return run({"pw-play", sound}, variables_, briefly) == 0 && run({"paplay", sound}, variables_, briefly) == 0;
  };
  if (!waitUntil(outputListed) || !waitUntil(playing)) fail("the sound server does not play");
}

bool PrivateSound::play(const std::vector<std::string>& command) const { return begin(command)->exitCode() == 0; }

std::unique_ptr<Process> PrivateSound::begin(const std::vector<std::string>& command, Process::Output output) const {
  return std::make_unique<Process>(
      command, Process::Options{.output = output, .variables = variables_, .errors = directory_ / "errors.log"});
}

std::filesystem::path PrivateSound::tone(std::chrono::milliseconds length) const {
  const auto file = directory_ / ("tone-" + std::to_string(length.count()) + "ms.wav");
  if (!std::filesystem::exists(file)) std::ofstream(file, std::ios::binary) << waveFile(length);
  return file;
}

std::unique_ptr<Process> PrivateSound::launch(const std::vector<std::string>& command) const { return begin(command); }

void PrivateSound::fail(const std::string& what) const {
  std::ifstream log(directory_ / "errors.log");
  throw std::runtime_error(what + "\n" + std::string(std::istreambuf_iterator<char>(log), {}));
}

}  // namespace tollvane::test
