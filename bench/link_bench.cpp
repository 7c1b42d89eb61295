// How long a sound takes from the log tool to the bell while a bridge misbehaves, beside an idle link in the same run.
// The application is the real one with Qt's event loop and the desktop's real applications; only what the user sees is
// virtual. The time begins when a line is written into the log tool's pipe, and ends when the bell has changed.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "app/app_delegate.h"
#include "platform/linux/apps/applications.h"
#include "platform/linux/system/clock_and_dates.h"
#include "platform/linux/system/qt_main_queue.h"
#include "platform/linux/workspace/launcher.h"
#include "platform/linux/workspace/linux_workspace.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/unique_fd.h"
#include "tests/virtual/log_lines.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr int samples = 300;
constexpr std::chrono::milliseconds betweenSounds{10};

struct NoRaiser : WindowRaiser {
  void raise(const ActivationTarget&, std::function<void(Raised)> done) override { done(Raised::unknown); }
};

// Everything of a desktop that the application needs; what it would show goes nowhere.
struct Desktop {
  explicit Desktop(const std::filesystem::path& home) {
    virtualPart.locations.support = home;
    virtualPart.defaults.set("hasLaunchedBefore", true);
  }
  Platform platform() {
    return {
        .mainQueue = queue,
        .clock = clock,
        .dates = virtualPart.dates,
        .defaults = virtualPart.defaults,
        .locations = virtualPart.locations,
        .files = files,
        .bundle = virtualPart.bundle,
        .children = virtualPart.children,
        .processes = processes,
        .workspace = workspace,
        .statusBar = virtualPart.statusBar,
        .application = virtualPart.application,
        .alerts = virtualPart.application,
        .http = virtualPart.http,
        .safari = virtualPart.safari,
        .login = virtualPart.login,
        .settingsWindows = virtualPart.settingsWindows,
        .wording = macWording,
    };
  }

  test::VirtualPlatform virtualPart;
  QtMainQueue queue;
  SystemClock clock;
  PosixFiles files;
  ProcFs processes;
  DesktopEntries entries;
  NoX11Windows windows;
  Applications applications{processes, entries, windows};
  NoRaiser raiser;
  GioLauncher launcher{nullptr};
  LinuxWorkspace workspace{applications, clock, raiser, launcher};
};

class Bridge {
 public:
  explicit Bridge(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const timeval patience{0, 20'000};
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) socket_.reset();
    write("{\"type\":\"bridge\",\"bundleID\":\"org.mozilla.firefox\"}\n{\"type\":\"hello\",\"version\":\"1\"}\n");
  }
  explicit operator bool() const { return static_cast<bool>(socket_); }

  // False if Tollvane has closed the connection.
  bool write(std::string_view bytes, const std::atomic<bool>* end = nullptr) {
    while (!bytes.empty() && !(end && *end)) {
      const ssize_t size = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (size < 0 && errno != EAGAIN && errno != EINTR) return false;
      if (size > 0) bytes.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
  }
  void read() const {
    std::array<char, 65536> bytes;
    while (::recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT) > 0) {
    }
  }

 private:
  UniqueFd socket_;
};

std::string repeated(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

struct Misbehaviour {
  const char* name;
  std::string bytes;  // sent again and again; empty: nothing is sent
  bool reads;
};

std::vector<Misbehaviour> misbehaviours() {
  std::string reports;
  for (int i = 0; i < 1000; ++i) {
    reports +=
        "{\"type\":\"audible\",\"tabId\":" + std::to_string(i) + ",\"title\":\"Title\",\"host\":\"example.org\"}\n";
  }
  return {
      {"idle", "", true},
      {"hellos without end", repeated("{\"type\":\"hello\",\"version\":\"1\"}\n", 1000), true},
      {"hellos, and no answer is read", repeated("{\"type\":\"hello\",\"version\":\"1\"}\n", 1000), false},
      {"reports without end", reports, true},
      {"titles of 10 MiB", "{\"type\":\"audible\",\"title\":\"" + std::string(10 << 20, 'x') + "\"}\n", true},
      {"titles of 1 MiB", "{\"type\":\"audible\",\"title\":\"" + std::string(1'000'000, 'x') + "\"}\n", true},
      {"5 MB of [", std::string(5'000'000, '[') + "\n", true},
  };
}

class Flood {
 public:
  Flood(const Misbehaviour& what, const std::string& socket) : thread_([this, what, socket] { run(what, socket); }) {}
  ~Flood() {
    end_ = true;
    thread_.join();
  }

 private:
  void run(const Misbehaviour& what, const std::string& socket) {
    while (!end_) {
      Bridge bridge(socket);
      if (!bridge) return;
      while (!end_) {
        if (what.bytes.empty()) std::this_thread::sleep_for(5ms);
        if (!bridge.write(what.bytes, &end_)) break;
        if (what.reads) bridge.read();
      }
    }
  }

  std::atomic<bool> end_ = false;
  std::thread thread_;
};

// The latencies in microseconds, sorted.
std::vector<double> measure(Desktop& desktop, const Misbehaviour& what, const std::string& socket) {
  std::array<int, 2> pipe{};
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) return {};
  const UniqueFd reading(pipe[0]);
  const UniqueFd writing(pipe[1]);
  std::vector<double> latencies;
  const auto watch = desktop.queue.watchReadable(reading.get(), [&] {
    std::array<char, 65536> bytes;
    const ssize_t size = ::read(reading.get(), bytes.data(), bytes.size());
    const std::string_view text(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    desktop.virtualPart.children.last().print(text);
    const std::string& tip = desktop.virtualPart.statusBar.shown.toolTip;
    const auto at = tip.find("sound-");
    if (at == std::string::npos) return;
    const SteadyClock::time_point written{SteadyClock::duration{std::stoll(tip.substr(at + 6))}};
    latencies.push_back(std::chrono::duration<double, std::micro>(SteadyClock::now() - written).count());
    if (latencies.size() == samples) QCoreApplication::quit();
  });
  std::atomic<bool> end = false;
  std::thread logTool([&] {
    std::this_thread::sleep_for(200ms);
    while (!end) {
      const auto now = SteadyClock::now().time_since_epoch().count();
      const std::string line = test::outputStarted("sound-" + std::to_string(now), 999'999);
      if (::write(writing.get(), line.data(), line.size()) < 0) return;
      std::this_thread::sleep_for(betweenSounds);
    }
  });
  {
    const Flood flood(what, socket);
    QTimer::singleShot(60s, [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
  }
  end = true;
  logTool.join();
  std::sort(latencies.begin(), latencies.end());
  return latencies;
}

int run() {
  std::string home = (std::filesystem::temp_directory_path() / "tollvane-bench-XXXXXX").string();
  if (::mkdtemp(home.data()) == nullptr) return 1;
  Desktop desktop(home);
  AppDelegate delegate(desktop.platform());
  delegate.applicationDidFinishLaunching();
  double idle = 0;
  std::printf("%-32s %10s %10s %8s\n", "bridge", "median us", "95 % us", "ratio");
  for (const Misbehaviour& what : misbehaviours()) {
    const auto latencies = measure(desktop, what, home + "/Tollvane/bridge.sock");
    if (latencies.size() < samples) {
      std::printf("%-32s only %zu of %d sounds were heard\n", what.name, latencies.size(), samples);
      continue;
    }
    const double median = latencies[samples / 2];
    if (idle == 0) idle = median;
    std::printf("%-32s %10.0f %10.0f %8.2f\n", what.name, median, latencies[samples * 95 / 100], median / idle);
  }
  delegate.applicationWillTerminate();
  std::filesystem::remove_all(home);
  return 0;
}

}  // namespace
}  // namespace tollvane

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  return tollvane::run();
}
