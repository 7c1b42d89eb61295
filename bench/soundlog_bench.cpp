// Measures what TollvaneLog costs and how fast it is, with a private sound server:
//   soundlog_bench [IDLE-SECONDS]     (default: 30)
// prints the context switches of an idle log, its memory, and how long after the server's message its line arrives.
// This process takes both times: it listens to the server itself and reads the log's lines. A time below zero means
// that the line arrived first. Only the figures of a release build mean something.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "soundlog/servers/pipewire_source.h"
#include "tests/support/private_sound.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using tollvane::soundlog::PipeWireSource;
using tollvane::soundlog::StreamStart;
using tollvane::test::PrivateSound;
using tollvane::test::Process;

constexpr int sounds = 20;

// The sum of all numbers after `name` in a file of /proc.
long sum(const std::filesystem::path& file, const std::string& name) {
  long total = 0;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with(name)) total += std::stol(line.substr(name.size()));
  }
  return total;
}

long contextSwitches(pid_t pid) {
  long total = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
    total += sum(task.path() / "status", "voluntary_ctxt_switches:");
    total += sum(task.path() / "status", "nonvoluntary_ctxt_switches:");
  }
  return total;
}

// Receives the server's messages and the log's lines on one event loop, and takes their times from the same clock.
class Race {
 public:
  explicit Race(const PrivateSound& sound) : sound_(sound), log_(startLog()) {}

  Process& log() { return *log_; }

  bool ready() {
    source_ = std::make_unique<PipeWireSource>(
        [](const tollvane::soundlog::ClientClaims&) { return tollvane::soundlog::Maker(); },
        PipeWireSource::Events{[this](const StreamStart&) { told_ = steady_clock::now(); },
                               [this] { attached_ = true; }, [](bool) {}});
    reader_ = tollvane::soundlog::watchDescriptor(log_->output(), G_IO_IN, [this](GIOCondition) {
      while (log_->line(0ms)) line_ = steady_clock::now();
    });
    return source_->connect() && spin([this] { return attached_; }, 5s) && round().has_value();
  }

  // How long after the server's message the line arrived.
  std::optional<steady_clock::duration> round() {
    for (int tries = 0; tries < 20; ++tries) {
      told_.reset();
      line_.reset();
      const auto player = sound_.begin({"pw-play", sound_.tone(200ms)});
      const bool both = spin([this] { return told_ && line_; }, 2s);
      player->exitCode();
      spin([] { return false; }, 100ms);
      if (both) return *line_ - *told_;
    }
    return std::nullopt;
  }

 private:
  std::unique_ptr<Process> startLog() {
    return sound_.begin({TOLLVANE_LOG, "stream", "--style", "ndjson", "--predicate", "x"}, Process::Output::read);
  }

  template <typename Condition>
  bool spin(Condition done, steady_clock::duration limit) {
    bool late = false;
    const auto timer = tollvane::soundlog::callAfter(limit, [&late] { late = true; });
    while (!done() && !late) g_main_context_iteration(nullptr, TRUE);
    return done();
  }

  const PrivateSound& sound_;
  std::unique_ptr<Process> log_;
  std::unique_ptr<PipeWireSource> source_;
  tollvane::soundlog::Watch reader_;
  bool attached_ = false;
  std::optional<steady_clock::time_point> told_, line_;
};

void measureIdle(pid_t pid, std::chrono::seconds length) {
  const long before = contextSwitches(pid);
  std::this_thread::sleep_for(length);
  std::printf("context switches in %lld idle seconds: %ld\n", static_cast<long long>(length.count()),
              contextSwitches(pid) - before);
  const std::filesystem::path rollup = "/proc/" + std::to_string(pid) + "/smaps_rollup";
  std::printf("memory: PSS %ld KiB, its own alone %ld KiB, RSS %ld KiB\n", sum(rollup, "Pss:"),
              sum(rollup, "Private_Clean:") + sum(rollup, "Private_Dirty:"), sum(rollup, "Rss:"));
}

void measureDelay(Race& race) {
  std::vector<double> delays;
  for (int i = 0; i < sounds; ++i) {
    if (const auto delay = race.round()) delays.push_back(std::chrono::duration<double, std::milli>(*delay).count());
  }
  if (delays.empty()) return void(std::puts("no sound was heard"));
  std::sort(delays.begin(), delays.end());
  std::printf("server's word to line, %zu sounds: median %.2f ms, from %.2f to %.2f ms\n", delays.size(),
              delays[delays.size() / 2], delays.front(), delays.back());
}

}  // namespace

int main(int count, char** arguments) {
  const std::chrono::seconds idle(count > 1 ? std::stoi(arguments[1]) : 30);
  PrivateSound sound;
  sound.start();
  for (const auto& [name, value] : sound.variables()) setenv(name.c_str(), value.c_str(), 1);
  Race race(sound);
  if (!race.ready()) return std::fputs("the log does not hear the private sound server\n", stderr), 1;
  measureDelay(race);
  measureIdle(race.log().pid(), idle);
  return 0;
}
