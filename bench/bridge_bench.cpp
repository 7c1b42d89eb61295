// Measures what TollvaneBridge costs:
//   bridge_bench [SECONDS]      (default: 5)
// prints the time from its start to its first line at the application's socket, beside a program that only copies its
// input; its memory; and how much later an answer comes through it than over a bare socket of the same kind, at 200
// messages a second. Bare and bridged messages take turns, so the machine is the same for both.
// Only the figures of a release build mean something.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "bridge/frames.h"
#include "tests/bridge/fake_application.h"
#include "tests/bridge/running_bridge.h"
#include "tests/support/temporary_directory.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using tollvane::bridge::frame;
using tollvane::test::FakeApplication;
using tollvane::test::Process;
using tollvane::test::RunningBridge;
using tollvane::test::TemporaryDirectory;
using tollvane::test::Wire;

constexpr int starts = 100;
constexpr auto period = 5ms;  // 200 messages a second

const std::string hello =
    R"({"type":"audible","tabId":1234567,"title":"A song of middling length - Some Site","host":"www.example.com"})";

double microseconds(steady_clock::duration time) { return std::chrono::duration<double, std::micro>(time).count(); }

struct Times {
  std::vector<double> sorted;  // microseconds

  explicit Times(std::vector<double> times) : sorted(std::move(times)) { std::sort(sorted.begin(), sorted.end()); }
  double at(double share) const {
    return sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
  }
};

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::exit(1);
}

// Sends all bytes back until the other side closes.
void echo(int socket) {
  std::array<char, 4096> buffer{};
  ssize_t size = 0;
  while ((size = read(socket, buffer.data(), buffer.size())) > 0)
    if (write(socket, buffer.data(), static_cast<std::size_t>(size)) != size) return;
}

// Stands in for the application: a thread that only echoes. It also echoes the bridge's introduction, which is read
// before the measurement begins.
std::thread echoThread(Wire& connection) {
  fcntl(connection.descriptor(), F_SETFL, fcntl(connection.descriptor(), F_GETFL) & ~O_NONBLOCK);
  return std::thread(echo, connection.descriptor());
}

void measureStart() {
  std::vector<double> bridges, copies;
  Process::Options options;
  options.input = Process::Input::written;
  options.output = Process::Output::read;
  for (int i = 0; i < starts; ++i) {
    const TemporaryDirectory data;
    FakeApplication application(data / "Tollvane" / "bridge.sock");
    auto begin = steady_clock::now();
    const RunningBridge bridge(data.path());
    if (!application.accept().line()) fail("the bridge does not introduce itself");
    bridges.push_back(microseconds(steady_clock::now() - begin));

    begin = steady_clock::now();
    Process copy({"cat"}, options);
    copy.writeLine("x");
    if (!copy.line()) fail("cat does not copy");
    copies.push_back(microseconds(steady_clock::now() - begin));
  }
  const Times bridge(bridges), copy(copies);
  std::printf("start to first line, ms: median %.2f, p99 %.2f; cat's: median %.2f, p99 %.2f (%d starts); ratio %.1f\n",
              bridge.at(0.5) / 1e3, bridge.at(0.99) / 1e3, copy.at(0.5) / 1e3, copy.at(0.99) / 1e3, starts,
              bridge.at(0.5) / copy.at(0.5));
}

void printMemory(pid_t pid) {
  long pss = 0, dirty = 0;
  std::ifstream stream("/proc/" + std::to_string(pid) + "/smaps_rollup");
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with("Pss:")) pss = std::stol(line.substr(4));
    if (line.starts_with("Private_Dirty:")) dirty = std::stol(line.substr(14));
  }
  std::printf("memory: PSS %ld KiB, of that changed by itself %ld KiB\n", pss, dirty);
}

void measureRoundTrips(std::chrono::seconds length) {
  const TemporaryDirectory data;
  FakeApplication application(data / "Tollvane" / "bridge.sock");
  FakeApplication bareEcho(data / "bare.sock");
  RunningBridge bridge(data.path());
  Wire connection = application.accept();
  Wire bare(tollvane::test::connectedTo(data / "bare.sock"));
  Wire bareConnection = bareEcho.accept();
  std::thread echoes = echoThread(connection), bareEchoes = echoThread(bareConnection);
  if (!bridge.output.frame()) fail("the bridge's introduction does not come back");

  std::vector<double> bridged, direct;
  const std::string message = frame(hello), line = hello + "\n";
  auto next = steady_clock::now();
  for (auto left = length / period; left > 0; --left) {
    std::this_thread::sleep_until(next += period / 2);
    auto begin = steady_clock::now();
    if (!bridge.input.write(message) || bridge.output.frame() != hello) fail("the bridge does not answer");
    bridged.push_back(microseconds(steady_clock::now() - begin));

    std::this_thread::sleep_until(next += period / 2);
    begin = steady_clock::now();
    if (!bare.write(line) || bare.line() != hello) fail("the bare socket does not answer");
    direct.push_back(microseconds(steady_clock::now() - begin));
  }
  printMemory(bridge.pid());
  bridge.input.close();
  bare.close();
  echoes.join();
  bareEchoes.join();
  const Times with(bridged), without(direct);
  for (const double share : {0.5, 0.99}) {
    std::printf("round trip, us, p%.0f: %.0f through the bridge, %.0f over a bare socket; added %.0f, ratio %.1f\n",
                share * 100, with.at(share), without.at(share), with.at(share) - without.at(share),
                with.at(share) / without.at(share));
  }
}

}  // namespace

int main(int count, char** arguments) {
  const std::chrono::seconds length(count > 1 ? std::stoi(arguments[1]) : 5);
  measureStart();
  measureRoundTrips(length);
  return 0;
}
