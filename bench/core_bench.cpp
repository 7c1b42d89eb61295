// Measures parts of Tollvane's core: making the menu's tree, and handling messages of browsers.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "app/browser_status.h"
#include "browser/browser_link.h"
#include "menu/sound_menu.h"
#include "platform/posix/posix_files.h"
#include "support/json_value.h"
#include "tests/virtual/core_parts.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

void menuOfFiftySounds(benchmark::State& state) {
  test::VirtualPlatform system;
  const Resolver resolver(system.processes, system.workspace, system.locations, system.files);
  std::vector<std::shared_ptr<SoundEvent>> events;
  for (int i = 0; i < 50; ++i) {
    events.push_back(std::make_shared<SoundEvent>(system.clock.now() - i * 1s, i % 3 ? "Mail" : "Firefox",
                                                  kind::startedPlayingAudio));
    if (i % 3 == 0)
      events.back()->tabTitle = "The title of a page that is about as long as titles are, " + std::to_string(i);
  }
  const auto nothing = [](const MenuItem&) {};
  const SoundMenuActions actions = {nothing, nothing, nothing, nothing, nothing, nothing, nothing, nothing, nothing};
  for (auto _ : state) {
    BrowserNames names(resolver);
    Menu menu = soundMenu({.events = events,
                           .suggestExtension = true,
                           .browser = [&](const SoundEvent& event) { return names.browser(event.app); },
                           .isConnected = [](Browser) { return true; },
                           .availableVersion = "2.0"},
                          actions, system.dates);
    benchmark::DoNotOptimize(menu);
  }
}
BENCHMARK(menuOfFiftySounds)->Unit(benchmark::kMicrosecond);

constexpr std::size_t messagesEach = 100;

// The clients of one listening socket.
class Clients {
 public:
  // `accept` lets the listener accept each client at once, because its queue is shorter than the number of clients.
  Clients(std::size_t count, const std::string& path, const std::function<void()>& accept) {
    const std::string message =
        R"({"type":"audible","tabId":1734,"title":"The title of a page","host":"www.example.org"})";
    for (std::size_t i = 0; i < messagesEach; ++i) batch_ += message + '\n';
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    for (std::size_t i = 0; i < count; ++i) {
      sockets_.emplace_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
      ok_ &= ::connect(sockets_.back().get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
      accept();
    }
  }
  void writeAll() {
    for (const auto& socket : sockets_)
      ok_ &= ::write(socket.get(), batch_.data(), batch_.size()) == static_cast<ssize_t>(batch_.size());
  }
  void readAll() {
    std::array<char, 65536> bytes;
    for (const auto& socket : sockets_) {
      while (::recv(socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT) > 0) {
      }
    }
  }
  bool ok() const { return ok_; }

 private:
  std::string batch_;
  std::vector<UniqueFd> sockets_;
  bool ok_ = true;
};

std::filesystem::path benchDirectory() {
  std::string name = (std::filesystem::temp_directory_path() / "tollvane-bench-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
  std::filesystem::create_directories(std::filesystem::path(name) / "Tollvane");
  return name;
}

void linkWithBrowsers(benchmark::State& state) {
  const auto connections = static_cast<std::size_t>(state.range(0));
  const auto directory = benchDirectory();
  test::VirtualPlatform system;
  system.locations.support = directory;
  system.files.createDirectories(directory / "Tollvane");
  const Paths paths(system.locations, system.files);
  BrowserLink link = test::makeLink(system, paths);
  std::map<const BrowserConnection*, std::size_t> heard;
  link.onTab = [&](BrowserConnection& from, const Message&) { ++heard[&from]; };
  link.start();
  Clients clients(connections, paths.bridgeSocket(), [&] { system.queue.drainDescriptors(); });
  for (auto _ : state) {
    clients.writeAll();
    system.queue.drainDescriptors();
  }
  for (const auto& [connection, count] : heard)
    if (count != state.iterations() * messagesEach) state.SkipWithError("a connection was starved");
  if (heard.size() != connections || !clients.ok()) state.SkipWithError("not every client was heard");
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(connections * messagesEach));
  link.stop();
  std::filesystem::remove_all(directory);
}
BENCHMARK(linkWithBrowsers)->Arg(1)->Arg(10)->Arg(64)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

// The baseline: the same sockets and the same waiting, but everything that is read is only written back.
void echoWithClients(benchmark::State& state) {
  const auto connections = static_cast<std::size_t>(state.range(0));
  const auto directory = benchDirectory();
  test::VirtualClock clock;
  test::VirtualMainQueue queue(clock);
  PosixFiles files;
  BridgeListener listener(queue, files);
  std::vector<LocalStream> sockets;
  std::vector<std::unique_ptr<MainQueue::Watch>> watches;
  std::array<char, 65536> bytes{};
  listener.onConnection = [&](LocalStream socket) {
    const int fd = socket.descriptor();
    sockets.push_back(std::move(socket));
    watches.push_back(queue.watchReadable(fd, [&bytes, fd] {
      const ssize_t size = ::recv(fd, bytes.data(), bytes.size(), MSG_DONTWAIT);
      if (size > 0) benchmark::DoNotOptimize(::send(fd, bytes.data(), static_cast<std::size_t>(size), MSG_NOSIGNAL));
    }));
  };
  listener.open(directory / "echo.sock");
  Clients clients(connections, directory / "echo.sock", [&] { queue.drainDescriptors(); });
  for (auto _ : state) {
    clients.writeAll();
    queue.drainDescriptors();
    clients.readAll();
  }
  if (!clients.ok()) state.SkipWithError("a client could not write");
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(connections * messagesEach));
  watches.clear();
  std::filesystem::remove_all(directory);
}
BENCHMARK(echoWithClients)->Arg(1)->Arg(10)->Arg(64)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tollvane

int main(int argc, char** argv) {
  rlimit files{};
  getrlimit(RLIMIT_NOFILE, &files);
  files.rlim_cur = files.rlim_max;  // a thousand connections have two thousand ends
  setrlimit(RLIMIT_NOFILE, &files);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
