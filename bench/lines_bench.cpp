// Measures how fast the bytes of the log tool become sound events. The baseline is a plain port, which parses every
// line into a DOM and compiles its regular expressions at each call. The lines are about 900 bytes long; a quarter of
// them report sounds, and each of these becomes an event.

#include <benchmark/benchmark.h>

#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

#include "detect/watcher.h"
#include "tests/virtual/log_lines.h"
#include "tests/virtual/virtual_platform.h"

namespace {

using namespace tollvane;
using namespace std::chrono_literals;

constexpr std::size_t corpusLines = 10'000;
constexpr std::size_t lineLength = 900;

// A line as the system's log tool prints it. The sender's path is padded, so that the line has the usual length.
std::string wholeLine(std::string_view process, std::string_view message) {
  nlohmann::ordered_json line{
      {"traceID", 30786325626388484},
      {"eventMessage", message},
      {"eventType", "logEvent"},
      {"source", nullptr},
      {"formatString", "%{public}s"},
      {"userID", 202},
      {"activityIdentifier", 0},
      {"subsystem", "com.example.coreaudio"},
      {"category", "session"},
      {"threadID", 3145},
      {"senderImageUUID", "63E2E9A9-1B6E-3E1A-8E1D-0F3A7C1B2D3E"},
      {"backtrace", {{"frames", {{{"imageOffset", 1193046}, {"imageUUID", "63E2E9A9-1B6E-3E1A-8E1D-0F3A7C1B2D3E"}}}}}},
      {"bootUUID", "0F3A7C1B-2D3E-4E1A-8E1D-63E2E9A91B6E"},
      {"processImagePath", "/usr/sbin/" + std::string(process)},
      {"senderImagePath", ""},
      {"timestamp", "2025-01-31 14:05:09.123456+0100"},
      {"machTimestamp", 1234567890123},
      {"messageType", "Default"},
      {"processImageUUID", "8E1D0F3A-7C1B-2D3E-4E1A-63E2E9A91B6E"},
      {"processID", 312},
      {"senderProgramCounter", 1193046},
      {"parentActivityIdentifier", 0},
      {"timezoneName", ""},
  };
  const std::size_t length = line.dump().size();
  if (length < lineLength) line["senderImagePath"] = "/" + std::string(lineLength - length - 2, 'x');
  return line.dump() + "\n";
}

std::vector<std::string> corpus() {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < corpusLines; ++i) {
    const std::string name = "player " + std::to_string(i);
    const std::string pid = std::to_string(10'000 + i);
    switch (i % 12) {
      case 0:
      case 4:
        lines.push_back(wholeLine("audiomxd", test::outputMessage(name, pid)));
        break;
      case 8:
        lines.push_back(wholeLine("systemsoundserverd", test::requestMessage(name, pid)));
        break;
      case 1:
      case 5:
      case 9:
        lines.push_back(wholeLine("audiomxd", test::outputMessage(name, pid, false)));
        break;
      default:
        lines.push_back(wholeLine("coreaudiod", "update_running_state of session " + name + " was considered"));
    }
  }
  return lines;
}

std::vector<std::string> reads(std::size_t linesARead) {
  std::vector<std::string> result;
  const auto lines = corpus();
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i % linesARead == 0) result.emplace_back();
    result.back() += lines[i];
  }
  return result;
}

void report(benchmark::State& state, std::size_t bytes, std::size_t events) {
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * corpusLines));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
  state.counters["bytes/line"] = static_cast<double>(bytes) / corpusLines;
  state.counters["events/line"] = static_cast<double>(events) / static_cast<double>(state.iterations() * corpusLines);
}

std::size_t totalSize(const std::vector<std::string>& texts) {
  std::size_t size = 0;
  for (const auto& text : texts) size += text.size();
  return size;
}

void watcher(benchmark::State& state) {
  test::VirtualPlatform system;
  const Resolver resolver(system.processes, system.workspace, system.locations, system.files);
  Watcher watcher(system.queue, system.clock, system.children, system.bundle, resolver);
  std::size_t events = 0;
  watcher.onEvent = [&](const std::shared_ptr<SoundEvent>& event) {
    benchmark::DoNotOptimize(event->app.data());
    ++events;
  };
  watcher.start();
  const auto input = reads(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    for (const auto& read : input) system.children.last().print(read);
    system.clock.advance(2s);  // otherwise every sound would be a repeat
  }
  report(state, totalSize(input), events);
}
BENCHMARK(watcher)->ArgName("lines/read")->Arg(1)->Arg(100)->Arg(10'000)->Unit(benchmark::kMillisecond);

// --- the plain port
// ---------------------------------------------------------------------------------------------------

std::vector<std::string> groups(const std::string& pattern, const std::string& text) {
  const std::regex compiled(pattern);
  std::smatch match;
  if (!std::regex_search(text, match, compiled)) return {};
  return {match.begin(), match.end()};
}

class PlainPort {
 public:
  std::function<void(std::shared_ptr<SoundEvent>)> onEvent;

  PlainPort(const Clock& clock, const Resolver& resolver) : clock_(clock), resolver_(resolver) {}

  void receive(const std::string& bytes) {
    buffer_ += bytes;
    std::size_t begin = 0;
    for (auto end = buffer_.find('\n'); end != std::string::npos; end = buffer_.find('\n', begin)) {
      readLine(buffer_.substr(begin, end - begin));
      begin = end + 1;
    }
    buffer_.erase(0, begin);
  }

 private:
  void readLine(const std::string& line) {
    const auto object = nlohmann::json::parse(line, nullptr, false);
    if (!object.is_object() || !object.contains("eventMessage")) return;
    const std::string path = object.value("processImagePath", "");
    handle(path.substr(path.rfind('/') + 1), object["eventMessage"].get<std::string>());
  }

  void handle(const std::string& process, const std::string& message) {
    if (process == "systemsoundserverd") {
      const auto found = groups(R"(inClientPID (\d+)\(([^)]*)\))", message);
      if (!found.empty()) emit(resolver_.appName(std::stoi(found[1]), found[2]), kind::alertSound);
    } else if (process == "audiomxd" && message.find("\"output_running\":true") != std::string::npos) {
      const auto found = groups("\"name\":\"([^\"]*)\\((\\d+)\\)\"", message);
      if (!found.empty()) emit(resolver_.appName(std::stoi(found[2]), found[1]), kind::startedPlayingAudio);
    }
  }

  void emit(const std::string& app, std::string_view what) {
    const auto now = clock_.steadyNow();
    const std::string key = app + "|" + std::string(what);
    if (const auto seen = lastSeen_.find(key); seen != lastSeen_.end() && now - seen->second < 1500ms) return;
    lastSeen_[key] = now;
    onEvent(std::make_shared<SoundEvent>(clock_.now(), app, what));
  }

  const Clock& clock_;
  const Resolver& resolver_;
  std::string buffer_;
  std::map<std::string, Instant> lastSeen_;
};

void plainPort(benchmark::State& state) {
  test::VirtualPlatform system;
  const Resolver resolver(system.processes, system.workspace, system.locations, system.files);
  PlainPort port(system.clock, resolver);
  std::size_t events = 0;
  port.onEvent = [&](const std::shared_ptr<SoundEvent>& event) {
    benchmark::DoNotOptimize(event->app.data());
    ++events;
  };
  const auto input = reads(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    for (const auto& read : input) port.receive(read);
    system.clock.advance(2s);
  }
  report(state, totalSize(input), events);
}
BENCHMARK(plainPort)->ArgName("lines/read")->Arg(100)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
