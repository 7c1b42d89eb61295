// Measures how long it takes to find the application that a process belongs to. There are 300 desktop entries, 300
// other processes, and the longest possible chain of parents from a player up to its application.
#include <benchmark/benchmark.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/system/clock_and_dates.h"
#include "platform/linux/workspace/launcher.h"
#include "platform/linux/workspace/linux_workspace.h"
#include "platform/linux/workspace/window_raiser.h"
#include "tests/virtual/virtual_time.h"

namespace {

namespace fs = std::filesystem;
using namespace tollvane;
using namespace std::chrono_literals;

constexpr int entryCount = 300;
constexpr int bystanders = 300;
constexpr int generations = 8;

void write(const fs::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
  fs::permissions(file, fs::perms::owner_all);
}

template <typename Condition>
void await(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + 20s;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      std::fputs("the processes to measure with did not come up\n", stderr);
      std::exit(1);
    }
    std::this_thread::sleep_for(2ms);
  }
}

// The surroundings of a measurement: folders, programs and processes, which are removed with the object.
class Machine {
 public:
  Machine() {
    std::string name = (fs::temp_directory_path() / "tollvane-bench-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) std::exit(1);
    root_ = fs::canonical(name);
    fs::create_directories(root_ / "bin");
    fs::create_directories(root_ / "share/applications");
    environment.dataFolders = {(root_ / "share").string(), "/usr/local/share", "/usr/share"};
    const DesktopEnvironment ours = DesktopEnvironment::current();
    environment.configurationFolders = ours.configurationFolders;
    environment.userUnitFolders = ours.userUnitFolders;
    environment.systemUnitFolders = ours.systemUnitFolders;
    environment.searchPath = "/usr/local/bin:/usr/bin:/bin:" + (root_ / "bin").string();
    for (int i = 0; i < entryCount; ++i) writeEntry(i);
    startChain();
    // A browser as Debian installs it, whose executable is not the program that its entry names.
    const fs::path browser = root_ / "lib/chromium/chromium";
    fs::create_directories(browser.parent_path());
    fs::copy_file(fs::canonical("/bin/sleep"), browser);
    write(root_ / "bin/chromium", "#!/bin/sh\n");
    write(root_ / "share/applications/chromium.desktop",
          "[Desktop Entry]\nType=Application\nName=Chromium\nExec=chromium %U\nCategories=WebBrowser;\n");
    children_.push_back(start({browser.string(), "600"}));
    for (int i = 0; i < bystanders; ++i) children_.push_back(start({"/bin/sleep", "600"}));
    await([&] { return processes.executable(children_.back()) == fs::canonical("/bin/sleep").string(); });
  }

  ~Machine() {
    // The application first, so that no shell of the chain starts anything.
    for (const pid_t pid : children_) ::kill(pid, SIGKILL);
    for (const pid_t pid : chain_) ::kill(pid, SIGKILL);
    for (const pid_t pid : children_) ::waitpid(pid, nullptr, 0);
    fs::remove_all(root_);
  }

  void writeEntry(int number) const {
    const std::string id = "org.example.App" + std::to_string(number);
    const std::string program = "app-" + std::to_string(number);
    std::string text = "[Desktop Entry]\nType=Application\nName=Application " + std::to_string(number) + "\n";
    for (int language = 0; language < 40; ++language) {
      const std::string tag = {static_cast<char>('a' + language % 26), static_cast<char>('a' + language / 26)};
      text += "Name[" + tag + "]=Anwendung\nComment[" + tag + "]=A sentence that says what this is good for\n";
    }
    text += "Exec=" + program + " %U\nIcon=example\nStartupWMClass=" + program + "\nCategories=Utility;\n";
    text += "Actions=new;\n\n[Desktop Action new]\nName=New\nExec=" + program + " --new\n";
    write(root_ / "share/applications" / (id + ".desktop"), text);
    if (number != entryCount - 1) write(root_ / "bin" / program, "#!/bin/sh\n");
  }

  const fs::path& root() const { return root_; }
  Pid application() const { return children_.front(); }
  Pid player() const { return chain_.back(); }

  ProcFs processes;
  DesktopEnvironment environment;

 private:
  static pid_t start(std::vector<std::string> arguments) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      if (::getppid() == parent) ::execv(pointers[0], pointers.data());
      ::_exit(127);
    }
    return pid;
  }

  // Starts the application, below it a chain of shell scripts, and below these the player.
  void startChain() {
    const std::string application = (root_ / "bin" / ("app-" + std::to_string(entryCount - 1))).string();
    fs::copy_file(fs::canonical("/bin/sh"), application);
    const auto level = [&](int generation) { return (root_ / ("level" + std::to_string(generation))).string(); };
    for (int i = 1; i < generations - 1; ++i) {
      const std::string next = i + 1 < generations - 1 ? level(i + 1) : "/bin/sleep 600";
      write(level(i), "#!/bin/sh\nexec 2>/dev/null\n" + next + "\ntrue\n");
    }
    children_.push_back(start({application, "-c", level(1) + "; true"}));
    await([&] {
      chain_.assign(1, children_.front());
      for (const Pid pid : processes.all()) {
        if (processes.parentPid(pid) == chain_.back()) chain_.push_back(pid);
      }
      return chain_.size() == generations &&
             processes.executable(chain_.back()) == fs::canonical("/bin/sleep").string();
    });
  }

  fs::path root_;
  std::vector<pid_t> children_;
  std::vector<pid_t> chain_;
};

std::unique_ptr<Machine> machine;

struct Desktop {
  Desktop() {
    // Just after folders were written, each look reads them again, because their times do not tell further changes.
    // Wait until that is over.
    await([&] {
      entries.refresh();
      return std::chrono::file_clock::now() - fs::last_write_time(machine->root() / "share/applications") > 100ms;
    });
    entries.refresh();
  }

  DesktopEntries entries{machine->environment};
  NoX11Windows windows;
  BackgroundPrograms background{entries};
  Applications applications{machine->processes, entries, windows, &background};
  test::VirtualClock time;
  test::VirtualMainQueue queue{time};
  Activator nobody{{}, queue};
  GioLauncher launcher{nullptr};
  test::HurryingClock clock;  // each search scans all processes itself
  LinuxWorkspace workspace{applications, clock, nobody, launcher};
};

void nameOfAnApplication(benchmark::State& state) {
  const Desktop desktop;
  for (auto _ : state) {
    auto application = desktop.workspace.runningApplication(machine->application());
    if (!application) state.SkipWithError("not found");
    benchmark::DoNotOptimize(application);
  }
}
BENCHMARK(nameOfAnApplication)->Unit(benchmark::kMicrosecond);

// From a player without an entry up to the application; eight processes in all.
void nameAfterTheLongestWalk(benchmark::State& state) {
  const Desktop desktop;
  for (auto _ : state) {
    Pid pid = machine->player();
    int seen = 1;
    auto application = desktop.workspace.regularApplication(pid);
    for (; !application && seen < generations; ++seen) {
      pid = machine->processes.parentPid(pid).value_or(0);
      application = desktop.workspace.regularApplication(pid);
    }
    if (!application || seen != generations) state.SkipWithError("not found");
    benchmark::DoNotOptimize(application);
  }
}
BENCHMARK(nameAfterTheLongestWalk)->Unit(benchmark::kMicrosecond);

// The cost of the start, when all entries are read.
void readAllEntries(benchmark::State& state) {
  for (auto _ : state) {
    auto entries = std::make_unique<DesktopEntries>(machine->environment);
    entries->refresh();
    benchmark::DoNotOptimize(entries->withId("org.example.App1"));
    state.PauseTiming();  // the end of a watch takes the kernel a while, and Tollvane ends none before itself
    entries.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(readAllEntries)->Unit(benchmark::kMillisecond);

void refreshWithoutAChange(benchmark::State& state) {
  Desktop desktop;
  for (auto _ : state) desktop.entries.refresh();
}
BENCHMARK(refreshWithoutAChange)->Unit(benchmark::kMicrosecond);

void refreshAfterOneEntryChanged(benchmark::State& state) {
  Desktop desktop;
  for (auto _ : state) {
    state.PauseTiming();
    machine->writeEntry(7);
    state.ResumeTiming();
    desktop.entries.refresh();
  }
}
BENCHMARK(refreshAfterOneEntryChanged)->Unit(benchmark::kMillisecond);

void findRunningApplication(benchmark::State& state) {
  const Desktop desktop;
  for (auto _ : state) {
    auto running = desktop.workspace.runningApplications("org.example.App" + std::to_string(entryCount - 1));
    if (running.size() != 1) state.SkipWithError("not found");
    benchmark::DoNotOptimize(running);
  }
  state.counters["processes"] = static_cast<double>(machine->processes.all().size());
}
BENCHMARK(findRunningApplication)->Unit(benchmark::kMicrosecond);

void findRunningBrowser(benchmark::State& state) {
  const Desktop desktop;
  for (auto _ : state) {
    auto running = desktop.workspace.runningApplications("org.chromium.Chromium");
    if (running.size() != 1) state.SkipWithError("not found");
    benchmark::DoNotOptimize(running);
  }
  state.counters["processes"] = static_cast<double>(machine->processes.all().size());
}
BENCHMARK(findRunningBrowser)->Unit(benchmark::kMicrosecond);

void findBrowserThatIsNotInstalled(benchmark::State& state) {
  const Desktop desktop;
  for (auto _ : state) benchmark::DoNotOptimize(desktop.workspace.runningApplications("com.google.Chrome"));
}
BENCHMARK(findBrowserThatIsNotInstalled)->Unit(benchmark::kMicrosecond);

// The first step after a click on an entry of the menu.
void listRegularApplications(benchmark::State& state) {
  const Desktop desktop;
  for (auto _ : state) benchmark::DoNotOptimize(desktop.workspace.regularApplications());
  state.counters["processes"] = static_cast<double>(machine->processes.all().size());
}
BENCHMARK(listRegularApplications)->Unit(benchmark::kMicrosecond);

// The menu asks whether each known browser runs; these searches share one scan of the processes.
void findSevenBrowsers(benchmark::State& state) {
  Desktop desktop;
  const SystemClock clock;
  for (auto _ : state) {
    const LinuxWorkspace sharing(desktop.applications, clock, desktop.nobody, desktop.launcher);
    for (int i = 0; i < 7; ++i) benchmark::DoNotOptimize(sharing.runningApplications("org.chromium.Chromium"));
  }
}
BENCHMARK(findSevenBrowsers)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  machine = std::make_unique<Machine>();
  benchmark::RunSpecifiedBenchmarks();
  machine.reset();
  return 0;
}
