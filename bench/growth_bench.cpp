// How the costs grow with what they depend on: each is measured with one, ten and a hundred times as much of it, beside
// the least that any program would have to do (limit...). Everything is made up, so the machine's own desktop entries
// and processes do not count.
#include <benchmark/benchmark.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>

#include "detect/watcher.h"
#include "tests/platform/linux/apps/fake_system.h"
#include "tests/virtual/log_lines.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

// --- bytes of the log tool to sounds ---------------------------------------------------------------------------------

// So many lines, of which a quarter are sounds, each of another application.
std::string lines(std::int64_t count) {
  std::string all;
  for (std::int64_t i = 0; i < count; ++i) {
    all += i % 4
               ? test::logLine("/usr/sbin/audiomxd", "the format of a stream has changed, number " + std::to_string(i))
               : test::outputStarted("player " + std::to_string(i), 0);
  }
  return all;
}

void linesToSounds(benchmark::State& state) {
  const std::string bytes = lines(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    test::VirtualPlatform system;
    const Resolver resolver(system.processes, system.workspace, system.locations, system.files);
    Watcher watcher(system.queue, system.clock, system.children, system.bundle, resolver);
    std::int64_t sounds = 0;
    watcher.onEvent = [&sounds](const std::shared_ptr<SoundEvent>&) { ++sounds; };
    watcher.start();
    state.ResumeTiming();
    system.children.last().print(bytes);
    if (sounds != (state.range(0) + 3) / 4) state.SkipWithError("not every sound was heard");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(linesToSounds)->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

// The bytes are looked at once, to find the ends of the lines.
void limitOfLines(benchmark::State& state) {
  const std::string bytes = lines(state.range(0));
  for (auto _ : state) {
    const char* at = bytes.data();
    const char* const end = at + bytes.size();
    while (at != end) {
      at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at))) + 1;
      benchmark::DoNotOptimize(at);
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(limitOfLines)->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

// --- desktop entries and processes -----------------------------------------------------------------------------------

constexpr Pid player = 2;

// A desktop with so many entries and processes. It is kept while its benchmarks run, because making it takes long.
struct Desktop {
  Desktop(std::int64_t entries, std::int64_t processes) {
    for (std::int64_t i = 0; i < entries; ++i) {
      const std::string name = "app-" + std::to_string(i);
      system.program("/usr/bin/" + name);
      system.entry("org.example." + name, "Name=Application\nExec=" + name + " %U\nStartupWMClass=" + name + "\n");
    }
    for (std::int64_t i = 0; i < processes; ++i) {
      const std::string name = "/usr/bin/" + (i == 0 ? "app-" + std::to_string(entries - 1) : "helper");
      if (i == 1) system.program(name);
      system.process({.pid = player + static_cast<Pid>(i), .executable = system.at(name), .arguments = {name}});
    }
    wanted = "org.example.app-" + std::to_string(entries - 1);
  }

  static Desktop& with(std::int64_t entries, std::int64_t processes) {
    static std::map<std::pair<std::int64_t, std::int64_t>, std::unique_ptr<Desktop>> desktops;
    auto& desktop = desktops[{entries, processes}];
    if (!desktop) desktop = std::make_unique<Desktop>(entries, processes);
    return *desktop;
  }

  test::FakeSystem system;
  std::string wanted;
};

// Which application is this process? Its entry is the last of all.
void nameOfAProcess(benchmark::State& state) {
  Desktop& desktop = Desktop::with(state.range(0), 300);
  for (auto _ : state) {
    const auto found = desktop.system.idOf(player);
    if (found != desktop.wanted) state.SkipWithError("not found");
  }
}
BENCHMARK(nameOfAProcess)->ArgName("entries")->Arg(30)->Arg(300)->Arg(3'000)->Unit(benchmark::kMicrosecond);

void readAllEntries(benchmark::State& state) {
  Desktop& desktop = Desktop::with(state.range(0), 300);
  for (auto _ : state) {
    auto entries = std::make_unique<DesktopEntries>(desktop.system.environment);
    entries->refresh();
    benchmark::DoNotOptimize(entries->withId(desktop.wanted));
    state.PauseTiming();  // the end of a watch takes the kernel a while, and Tollvane ends none before itself
    entries.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(readAllEntries)->ArgName("entries")->Arg(30)->Arg(300)->Arg(3'000)->Unit(benchmark::kMicrosecond);

// Each file is opened and read.
void limitOfEntries(benchmark::State& state) {
  Desktop& desktop = Desktop::with(state.range(0), 300);
  const std::filesystem::path folder = desktop.system.at("/usr/share/applications");
  for (auto _ : state) {
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
      std::ifstream stream(file.path(), std::ios::binary);
      const std::string text(std::istreambuf_iterator<char>(stream), {});
      benchmark::DoNotOptimize(text.data());
    }
  }
}
BENCHMARK(limitOfEntries)->ArgName("entries")->Arg(30)->Arg(300)->Arg(3'000)->Unit(benchmark::kMicrosecond);

void findRunningApplication(benchmark::State& state) {
  Desktop& desktop = Desktop::with(300, state.range(0));
  for (auto _ : state) {
    if (desktop.system.workspace().runningApplications(desktop.wanted).size() != 1) state.SkipWithError("not found");
  }
}
BENCHMARK(findRunningApplication)
    ->ArgName("processes")
    ->Arg(100)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Unit(benchmark::kMicrosecond);

// The folder of processes is listed, and each is asked for its program.
void limitOfProcesses(benchmark::State& state) {
  Desktop& desktop = Desktop::with(300, state.range(0));
  for (auto _ : state) {
    for (const Pid pid : desktop.system.processes().all())
      benchmark::DoNotOptimize(desktop.system.processes().executable(pid));
  }
}
BENCHMARK(limitOfProcesses)->ArgName("processes")->Arg(100)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tollvane

BENCHMARK_MAIN();
